#include "export/ExportPreset.h"

#include <algorithm>
#include <array>

namespace recorder {

namespace {

const std::array<ExportPreset, 7>& table() {
    static const std::array<ExportPreset, 7> presets{{
        {"source", "Same as project", 0, 0, "Uses the project canvas size"},
        {"1080p", "1080p", 1920, 1080, ""},
        {"1440p", "1440p", 2560, 1440, ""},
        {"4k", "4K", 3840, 2160, ""},
        {"vertical", "Vertical 9:16", 1080, 1920, "Reels, TikTok, Shorts"},
        {"square", "Square 1:1", 1080, 1080, "Feed posts"},
        {"portrait45", "Portrait 4:5", 1080, 1350, "Instagram feed"},
    }};
    return presets;
}

} // namespace

std::span<const ExportPreset> ExportPreset::all() { return table(); }

const ExportPreset& ExportPreset::source() { return table().front(); }

std::optional<ExportPreset> ExportPreset::withID(const std::string& id) {
    auto found = std::find_if(table().begin(), table().end(), [&](const ExportPreset& p) { return p.id == id; });
    if (found == table().end()) return std::nullopt;
    return *found;
}

} // namespace recorder
