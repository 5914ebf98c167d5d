#pragma once

#include "model/ShapeSpec.h"

#include <QImage>

// Rasters of shapes (arrows, lines, rectangles, ellipses), drawn on in
// steps by the draw animation.
namespace recorder::ShapeRenderer {

// Pixels around the shape's box that its stroke, head and shadow may reach,
// for a canvas `canvasHeight` pixels high.
int padding(const ShapeSpec& spec, double canvasHeight);

// The stroke width in pixels: at least 1, and at most half the canvas, so
// that an absurd width gives a large picture rather than a huge one.
double strokePixels(const ShapeSpec& spec, double canvasHeight);

// The shape in a box of `width` by `height` pixels with `padding` around it,
// drawn `progress` (0 to 1) of the way on. Null when the picture would be
// larger than any canvas needs.
QImage raster(const ShapeSpec& spec, int width, int height, double canvasHeight, double progress);

// The largest raster made, in pixels, sides and area.
constexpr int largestSide = 8192;
constexpr long long largestArea = 32LL * 1024 * 1024;

} // namespace recorder::ShapeRenderer
