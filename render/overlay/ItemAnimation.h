#pragma once

#include "model/MediaItem.h"

namespace recorder {

// What the in and out animations of a media item do to it at one time.
// Offsets are canvas pixels; `dy` is applied downward on the canvas.
struct ItemAnimation {
    double opacity = 1;
    double scale = 1;
    double dx = 0;
    double dy = 0;

    // For a canvas of `canvasWidth` by `canvasHeight` and the item's own
    // box of `boxWidth` by `boxHeight`, all pixels. Starts from the item's
    // `opacity`; in and out effects multiply where they overlap.
    static ItemAnimation at(const MediaItem& item, double t, double canvasWidth, double canvasHeight,
                            double boxWidth, double boxHeight);

    // How much of a shape is drawn at `t`, 0 to 1, from its draw animations.
    static double drawProgress(const MediaItem& item, double t);
    // The same in the 100 steps a shape raster is made in.
    static double drawSteps(const MediaItem& item, double t);
};

} // namespace recorder
