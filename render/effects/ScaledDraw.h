#pragma once

#include <QImage>

// Draws a premultiplied picture through a scale-and-shift map (the screen
// under its placement and the zoom), source over. Where it shrinks each
// output pixel averages the area it covers, so small text stays faithful
// and fine lines don't shimmer; where it grows, linear interpolation. The
// picture's edges get their exact coverage and nothing from outside it, and
// its corners are rounded and anti-aliased.
namespace recorder::ScaledDraw {

// Output x' = scaleX·x + dx, y' = scaleY·y + dy; `radius` in output pixels.
void draw(QImage& target, const QImage& source, double scaleX, double scaleY, double dx, double dy, double radius);

} // namespace recorder::ScaledDraw
