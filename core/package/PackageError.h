#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace recorder {

// A file operation on a package that failed, in words for the person.
class PackageError : public std::runtime_error {
public:
    PackageError(const std::string& action, const std::filesystem::path& path, std::error_code error);

    const std::filesystem::path& path() const { return path_; }
    std::error_code code() const { return code_; }

private:
    std::filesystem::path path_;
    std::error_code code_;
};

} // namespace recorder
