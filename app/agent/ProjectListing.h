#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <filesystem>
#include <string>

// The packages in the recordings folder, newest first, as agents see them.
namespace recorder::ProjectListing {

nlohmann::json describe(const std::filesystem::path& folder, const std::string& extension, std::size_t limit);

// Seconds rounded to two decimals, half away from zero, as tools report times.
double roundedSeconds(double seconds);

} // namespace recorder::ProjectListing
