#pragma once

namespace recorder {

// A uniform scale of the whole canvas about a fixed anchor: the canvas point
// (x, y), origin top left, goes to (scale·x + tx, scale·y + ty).
struct ZoomTransform {
    double scale = 1;
    double tx = 0;
    double ty = 0;

    bool operator==(const ZoomTransform&) const = default;
};

} // namespace recorder
