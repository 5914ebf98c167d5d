#include "model/CanvasPreset.h"

#include <array>
#include <cmath>

namespace recorder {

namespace {
constexpr std::array<CanvasPreset, 7> presets{{
    {"16:9", "16:9 · Landscape", 1920, 1080},
    {"9:16", "9:16 · Vertical", 1080, 1920},
    {"1:1", "1:1 · Square", 1080, 1080},
    {"4:5", "4:5 · Portrait", 1080, 1350},
    {"4:3", "4:3 · Classic", 1440, 1080},
    {"3:2", "3:2", 1620, 1080},
    {"21:9", "21:9 · Ultrawide", 2520, 1080},
}};
} // namespace

std::span<const CanvasPreset> CanvasPreset::all() { return presets; }

std::optional<CanvasPreset> CanvasPreset::matching(const CanvasSettings& canvas) {
    if (canvas.height == 0) return std::nullopt;
    double ratio = double(canvas.width) / double(canvas.height);
    for (const auto& preset : presets)
        if (std::fabs(double(preset.width) / double(preset.height) - ratio) < 0.01) return preset;
    return std::nullopt;
}

} // namespace recorder
