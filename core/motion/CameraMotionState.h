#pragma once

#include "model/CameraSettings.h"
#include "model/Rect.h"

#include <optional>

namespace recorder {

// Where the camera and the screen stand at one instant, in canvas pixels
// (origin top left), and how far a layout change has come.
struct CameraMotionState {
    CameraLayout from = CameraLayout::hidden;
    CameraLayout to = CameraLayout::hidden;
    double progress = 1;
    std::optional<Rect> rect;
    double scale = 1;
    double rotation = 0;
    // 1 normal, 0 edge-on, negative mirrored.
    double flipX = 1;
    Rect screenFrame;
    bool screenVisible = true;
    // 0 gives the corner radius of `from`, 1 that of `to`.
    double radiusMix = 1;

    bool operator==(const CameraMotionState&) const = default;
};

} // namespace recorder
