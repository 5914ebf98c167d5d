#pragma once

#include <filesystem>

// Where this application keeps things on a freedesktop system, each folder
// named after the product's compact name.
namespace recorder::AppPaths {

// $XDG_DATA_HOME/<compact>, default ~/.local/share/<compact>.
std::filesystem::path supportFolder();
// $XDG_STATE_HOME/<compact>, default ~/.local/state/<compact>.
std::filesystem::path stateFolder();
// $XDG_CONFIG_HOME/<compact>/<compact>.conf.
std::filesystem::path settingsFile();
// XDG_VIDEOS_DIR from user-dirs.dirs, else ~/Videos.
std::filesystem::path videosFolder();
std::filesystem::path homeFolder();

} // namespace recorder::AppPaths
