#pragma once

#include <QImage>
#include <QPointF>

// The two blurs of a moving view, for premultiplied pictures, in place. Both
// average the picture along a line through each pixel, the picture's edge
// extending outwards. They run as a few passes that each average the
// picture with a shifted copy of itself, doubling the number of samples
// per pass, so a long blur costs a handful of passes.
namespace recorder::MotionBlur {

// A zoom: the line runs through the pixel towards `center` and away from
// it, `amount` pixels long at `referenceDistance` from the centre and in
// proportion to the distance elsewhere, so the centre stays sharp.
void zoom(QImage& image, QPointF center, double amount, double referenceDistance);

// A pan: the line runs along `direction` (any length), `radius` pixels
// either side of the pixel.
void directional(QImage& image, double radius, QPointF direction);

} // namespace recorder::MotionBlur
