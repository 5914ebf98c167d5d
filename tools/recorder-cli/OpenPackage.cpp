#include "OpenPackage.h"

#include "package/ProjectPackage.h"

#include <iostream>

namespace recorder::cli {

std::optional<Project> openPackage(const std::filesystem::path& package) {
    try {
        return ProjectPackage::load(package);
    } catch (const std::exception& error) {
        std::cerr << error.what() << " Check that " << package.string() << " is a project package folder.\n";
        return std::nullopt;
    }
}

} // namespace recorder::cli
