#include "package/MigrationError.h"

namespace recorder {

MigrationError::MigrationError(Kind kind, long long found, int supported, std::optional<std::string> savedWith)
    : std::runtime_error(describe(kind, savedWith, Brand::shared())), kind_(kind), found_(found), supported_(supported),
      savedWith_(std::move(savedWith)) {}

MigrationError MigrationError::newerThanApp(long long found, int supported, std::optional<std::string> savedWith) {
    return {Kind::newerThanApp, found, supported, std::move(savedWith)};
}

MigrationError MigrationError::missingVersion() { return {Kind::missingVersion, 0, 0, std::nullopt}; }

std::string MigrationError::description(const Brand& brand) const { return describe(kind_, savedWith_, brand); }

std::string MigrationError::describe(Kind kind, const std::optional<std::string>& savedWith, const Brand& brand) {
    if (kind == Kind::missingVersion) return "This isn't a " + brand.display + " project file, or it's damaged.";
    std::string who = savedWith ? brand.display + " " + *savedWith : "a newer version of " + brand.display;
    return "It was saved with " + who + ", which added things this version can't show. Update " + brand.display +
           " to open it.";
}

} // namespace recorder
