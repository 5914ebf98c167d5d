#pragma once

#include "brand/Brand.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace recorder {

// Why a manifest could not be brought forward to the schema this build reads.
class MigrationError : public std::runtime_error {
public:
    enum class Kind { newerThanApp, missingVersion };

    static MigrationError newerThanApp(long long found, int supported, std::optional<std::string> savedWith);
    static MigrationError missingVersion();

    Kind kind() const { return kind_; }
    long long found() const { return found_; }
    int supported() const { return supported_; }
    const std::optional<std::string>& savedWith() const { return savedWith_; }

    std::string description(const Brand& brand) const;

private:
    MigrationError(Kind kind, long long found, int supported, std::optional<std::string> savedWith);
    static std::string describe(Kind kind, const std::optional<std::string>& savedWith, const Brand& brand);

    Kind kind_;
    long long found_ = 0;
    int supported_ = 0;
    std::optional<std::string> savedWith_;
};

} // namespace recorder
