#pragma once

#include "compose/SourceImage.h"

#include <QPainter>
#include <QRectF>
#include <QTransform>

namespace recorder::RoundedImage {

// Draws `image` inside `clip` with its corners rounded by `radius`, both in
// layout space, all of it then mapped by `layoutToTarget`. The picture is
// resampled once, from the level that suits the whole map, and the corners
// are anti-aliased. A radius of 0 or less draws the picture unmasked.
void draw(QPainter& painter, const SourceImage& image, const QTransform& imageToLayout, const QRectF& clip,
          double radius, const QTransform& layoutToTarget);

// The larger of the map's two scale factors.
double largestScale(const QTransform& map);

} // namespace recorder::RoundedImage
