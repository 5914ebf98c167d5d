#pragma once

#include <QImage>

// A Gaussian blur of standard deviation `sigma`, made of three box blurs,
// so its cost doesn't grow with the radius. The picture's edge pixels
// extend outwards, as for a picture clamped to its extent. Works on
// premultiplied 32-bit and on alpha-only (Format_Alpha8) pictures, in place.
namespace recorder::GaussianBlur {

void blur(QImage& image, double sigma);

} // namespace recorder::GaussianBlur
