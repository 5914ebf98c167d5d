#pragma once

#include <QImage>

// Halving and doubling premultiplied pictures. Halving is a 2×2 box, the
// level a small drawing samples from so fine detail averages out instead of
// shimmering; doubling is bilinear, for effects that work at half size.
namespace recorder::HalfSize {

// ceil(w/2) by ceil(h/2); an odd last column or row repeats itself.
QImage shrink(const QImage& image);

// Fills all of `full` from `half` (at least ceil(full/2) in size), each
// output pixel centred on its place in the half-size picture.
void expandInto(const QImage& half, QImage& full);

} // namespace recorder::HalfSize
