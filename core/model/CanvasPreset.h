#pragma once

#include "model/CanvasSettings.h"

#include <optional>
#include <span>
#include <string_view>

namespace recorder {

struct CanvasPreset {
    std::string_view id;
    std::string_view name;
    int width;
    int height;

    // In menu order.
    static std::span<const CanvasPreset> all();
    // The first preset whose aspect ratio is within 0.01 of the canvas's.
    static std::optional<CanvasPreset> matching(const CanvasSettings& canvas);

    bool operator==(const CanvasPreset&) const = default;
};

} // namespace recorder
