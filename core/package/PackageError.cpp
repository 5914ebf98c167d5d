#include "package/PackageError.h"

namespace recorder {

namespace {
std::string sentence(const std::string& action, const std::filesystem::path& path, std::error_code error) {
    std::string reason = error.message();
    return "Couldn't " + action + " \"" + path.string() + "\": " + reason + ".";
}
} // namespace

PackageError::PackageError(const std::string& action, const std::filesystem::path& path, std::error_code error)
    : std::runtime_error(sentence(action, path, error)), path_(path), code_(error) {}

} // namespace recorder
