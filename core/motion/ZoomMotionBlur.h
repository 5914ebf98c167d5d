#pragma once

#include "model/Point.h"

namespace recorder {

// How much the zoom moves between this frame and the next, scaled by the
// style's motion blur: the renderer turns the amounts into blur filters.
// (dx, dy) is the pan in canvas pixels; focus the fixed point of this frame's map.
struct ZoomMotionBlur {
    double zoomAmount = 0;
    double panAmount = 0;
    double dx = 0;
    double dy = 0;
    Point focus;

    bool operator==(const ZoomMotionBlur&) const = default;
};

} // namespace recorder
