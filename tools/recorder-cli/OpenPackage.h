#pragma once

#include "model/Project.h"

#include <filesystem>
#include <optional>

namespace recorder::cli {

// Loads a package for a command; on failure tells the person on stderr why
// and what to check, and gives no project.
std::optional<Project> openPackage(const std::filesystem::path& package);

} // namespace recorder::cli
