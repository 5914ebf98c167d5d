#include "AppPaths.h"

#include "brand/Brand.h"

#include <cstdlib>
#include <fstream>
#include <optional>
#include <pwd.h>
#include <string>
#include <unistd.h>

namespace recorder::AppPaths {

namespace fs = std::filesystem;

namespace {

fs::path fromEnvironment(const char* name, const fs::path& fallback) {
    const char* value = std::getenv(name);
    // Relative values are invalid by the base-directory rules and are ignored.
    if (value && *value == '/') return value;
    return fallback;
}

fs::path configHome() { return fromEnvironment("XDG_CONFIG_HOME", homeFolder() / ".config"); }

// user-dirs.dirs lines look like XDG_VIDEOS_DIR="$HOME/Videos".
std::optional<fs::path> userDirsVideos() {
    std::ifstream in(configHome() / "user-dirs.dirs");
    std::string line;
    const std::string key = "XDG_VIDEOS_DIR=\"";
    while (std::getline(in, line)) {
        if (line.rfind(key, 0) != 0 || line.back() != '"') continue;
        std::string value = line.substr(key.size(), line.size() - key.size() - 1);
        if (value.rfind("$HOME", 0) == 0) return homeFolder().string() + value.substr(5);
        if (!value.empty() && value.front() == '/') return fs::path(value);
    }
    return std::nullopt;
}

} // namespace

fs::path homeFolder() {
    if (const char* home = std::getenv("HOME"); home && *home) return home;
    if (const passwd* entry = ::getpwuid(::getuid()); entry && entry->pw_dir) return entry->pw_dir;
    return "/";
}

fs::path supportFolder() {
    return fromEnvironment("XDG_DATA_HOME", homeFolder() / ".local" / "share") / Brand::shared().compact;
}

fs::path stateFolder() {
    return fromEnvironment("XDG_STATE_HOME", homeFolder() / ".local" / "state") / Brand::shared().compact;
}

fs::path settingsFile() {
    const auto& compact = Brand::shared().compact;
    return configHome() / compact / (compact + ".conf");
}

fs::path videosFolder() { return userDirsVideos().value_or(homeFolder() / "Videos"); }

} // namespace recorder::AppPaths
