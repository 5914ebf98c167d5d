#pragma once

#include "model/MediaItem.h"

#include <QImage>
#include <QRectF>
#include <QTransform>

#include <optional>

namespace recorder {

// A media item of kind `blur`: a rectangle of the stage shown blurred or in
// blocks, filtered before the zoom so it sits on the recording and grows
// with it. Stage pixels, origin top left.
struct BlurRegion {
    enum class Style { gaussian, pixelate };

    // Whole pixels; it may reach past the canvas.
    QRectF rect;
    Style style = Style::gaussian;
    // The blur's deviation, or the side of a block, in stage pixels.
    double amount = 0;
    double cornerRadius = 0;
    double opacity = 1;
    // The stage's own size: beyond its edges the blur repeats the edge
    // pixels; beyond a zoomed picture's edges, where the stage goes on
    // unseen, it reflects what is seen instead.
    QSizeF canvas;

    // The region of an item on a width × height canvas; none when it is
    // under 2 pixels either way, wholly outside the canvas, invisible, or
    // not a sensible rectangle at all (not finite, negative, absurdly far).
    static std::optional<BlurRegion> of(const MediaItem& item, double width, double height);

    // Filters `target`, which holds the stage as drawn through
    // `stageToTarget` (a scale and a shift): the same as filtering the stage
    // and then drawing it through the map, with the blur and the blocks
    // scaled along.
    void apply(QImage& target, const QTransform& stageToTarget) const;
};

} // namespace recorder
