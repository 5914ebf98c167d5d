#pragma once

#include "model/Rect.h"

#include <QRectF>
#include <QSizeF>
#include <QTransform>

// The two ways a picture goes into a rectangle of canvas pixels (origin top
// left): fit keeps all of it, fill covers the rectangle and crops.
namespace recorder::Placement {

struct Placed {
    // From the picture's own pixels to the canvas.
    QTransform transform;
    // What shows: the fitted picture, or the whole rectangle for a fill.
    QRectF rect;
};

// scale = min(w/imageWidth, h/imageHeight), centred.
Placed fit(const QRectF& box, const QSizeF& image);
// scale = max(w/imageWidth, h/imageHeight), centred, cropped to the box.
Placed fill(const QRectF& box, const QSizeF& image);

inline QRectF toQRectF(const Rect& r) { return {r.x, r.y, r.width, r.height}; }

} // namespace recorder::Placement
