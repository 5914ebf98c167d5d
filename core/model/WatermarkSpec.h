#pragma once

#include "model/Point.h"
#include "model/WatermarkSettings.h"

#include <optional>
#include <string>

namespace recorder {

// The product mark as computed for one export or preview.
struct WatermarkSpec {
    std::string text;
    WatermarkPosition position = WatermarkPosition::bottomRight;
    double opacity = 0.9;
    double scale = 0.03;
    std::optional<WatermarkPlacement> placement;
    std::optional<Point> center;

    bool operator==(const WatermarkSpec&) const = default;
};

} // namespace recorder
