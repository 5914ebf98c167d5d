#pragma once

#include "model/Project.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace recorder::ProjectMigrator {

// Bytes of a manifest of any schema in, the current Project out. Throws
// MigrationError, JsonParseError or DecodingError; never touches a file.
Project migrate(std::string_view bytes);

// The schema steps alone, on the generic tree: each adds only keys it names,
// so unknown keys survive until the decode drops them.
void upgrade(nlohmann::json& object, long long fromVersion);

} // namespace recorder::ProjectMigrator
