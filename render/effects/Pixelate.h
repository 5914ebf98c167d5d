#pragma once

#include <QImage>
#include <QPointF>

// Blocks of one colour: the picture cut into square cells on a grid through
// `origin` (pixels, may lie outside the picture), each cell filled with the
// mean of its pixels inside the picture. Premultiplied 32-bit, in place.
namespace recorder::Pixelate {

// A cell narrower than a pixel leaves the picture as it is.
void apply(QImage& image, QPointF origin, double cell);

} // namespace recorder::Pixelate
