#pragma once

#include "events/ClickEvent.h"
#include "model/RGBAColor.h"
#include "model/Rect.h"

#include <QPointF>

#include <vector>

class QImage;
class QTransform;

namespace recorder {

// The ring that spreads from a left click for a moment after the press, in
// stage pixels (origin top left): it grows from 0.6 to 2.8 cursor heights
// and fades out over its life.
struct ClickRipple {
    static constexpr double lifetime = 0.45;

    QPointF centre;
    double radius = 0;
    double thickness = 0;
    RGBAColor color;

    // The ripples alive at a source time, in the order of the clicks. Only
    // left presses make one; a click's recorded position is used, not the
    // smoothed pointer's, so the ring stays where the click happened.
    static std::vector<ClickRipple> live(const std::vector<ClickEvent>& clicks, double sourceTime, const Rect& screenFrame,
                                         double cursorHeight, const RGBAColor& highlight);

    // Source over `target`, which holds the stage through `stageToTarget`
    // (a scale and a shift). Only the ring's band is visited: a ripple is
    // mostly empty inside.
    void draw(QImage& target, const QTransform& stageToTarget) const;

    // Full colour from radius − thickness out to nothing at the radius, and
    // from nothing at radius − 1.5·thickness in to full colour at radius −
    // thickness: the smaller of two radial ramps.
    double alphaAt(double distance) const;
};

} // namespace recorder
