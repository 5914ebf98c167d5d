#include "overlay/ItemAnimation.h"

#include "model/Easing.h"

#include <algorithm>
#include <cmath>

namespace recorder {

namespace {

constexpr double pi = 3.14159265358979323846;

double clamp01(double value) { return std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : 0.0; }

struct Sizes {
    double W, H, w, h;
};

// The in effect at progress `p` < 1. dy grows downward, and the names go by
// this arithmetic, not their wording: an in slideUp begins above its place.
void applyIn(ItemAnimation& a, MediaAnimation kind, double p, const Sizes& s, bool isShape) {
    double e = apply(Easing::easeOut, p);
    switch (kind) {
    case MediaAnimation::none: break;
    case MediaAnimation::fade: a.opacity *= e; break;
    case MediaAnimation::pop:
        a.scale = apply(Easing::spring, p);
        if (3 * p < 1) a.opacity *= 3 * p;
        break;
    case MediaAnimation::slideUp: a.dy = -0.15 * s.H * (1 - e), a.opacity *= e; break;
    case MediaAnimation::slideDown: a.dy = 0.15 * s.H * (1 - e), a.opacity *= e; break;
    case MediaAnimation::slideLeft: a.dx = 0.15 * s.W * (1 - e), a.opacity *= e; break;
    case MediaAnimation::slideRight: a.dx = -0.15 * s.W * (1 - e), a.opacity *= e; break;
    case MediaAnimation::shake:
        a.dx = 0.08 * s.w * (1 - p) * std::sin(6 * pi * p);
        if (4 * p < 1) a.opacity *= 4 * p;
        break;
    case MediaAnimation::bounce:
        a.dy = 0.35 * s.h * (1 - p) * std::fabs(std::sin(2.5 * pi * p));
        if (4 * p < 1) a.opacity *= 4 * p;
        break;
    case MediaAnimation::draw:
        if (!isShape) a.opacity *= e;
        break;
    }
}

// The out effect at progress `p` < 1, added to what the in effect gave.
void applyOut(ItemAnimation& a, MediaAnimation kind, double p, const Sizes& s, bool isShape) {
    double e = apply(Easing::easeOut, p);
    switch (kind) {
    case MediaAnimation::none: break;
    case MediaAnimation::fade: a.opacity *= e; break;
    case MediaAnimation::pop:
        a.scale *= 0.6 + 0.4 * e;
        a.opacity *= std::min(3 * p, 1.0);
        break;
    case MediaAnimation::slideUp: a.dy += 0.15 * s.H * (1 - e), a.opacity *= e; break;
    case MediaAnimation::slideDown: a.dy += -0.15 * s.H * (1 - e), a.opacity *= e; break;
    case MediaAnimation::slideLeft: a.dx += -0.15 * s.W * (1 - e), a.opacity *= e; break;
    case MediaAnimation::slideRight: a.dx += 0.15 * s.W * (1 - e), a.opacity *= e; break;
    case MediaAnimation::shake:
        a.dx += 0.08 * s.w * (1 - p) * std::sin(6 * pi * p);
        a.opacity *= std::min(4 * p, 1.0);
        break;
    case MediaAnimation::bounce:
        a.dy += 0.35 * s.h * (1 - p) * std::fabs(std::sin(2.5 * pi * p));
        a.opacity *= std::min(4 * p, 1.0);
        break;
    case MediaAnimation::draw:
        if (!isShape) a.opacity *= e;
        break;
    }
}

} // namespace

ItemAnimation ItemAnimation::at(const MediaItem& item, double t, double canvasWidth, double canvasHeight,
                                double boxWidth, double boxHeight) {
    ItemAnimation a;
    a.opacity = item.opacity;
    double d = item.animationDuration;
    if (!(d > 0)) return a;
    Sizes sizes{canvasWidth, canvasHeight, boxWidth, boxHeight};
    bool isShape = item.kind == AssetKind::shape;
    double inP = item.inAnimation != MediaAnimation::none ? clamp01((t - item.start) / d) : 1;
    double outP = item.outAnimation != MediaAnimation::none ? clamp01((item.end - t) / d) : 1;
    if (inP < 1) applyIn(a, item.inAnimation, inP, sizes, isShape);
    if (outP < 1) applyOut(a, item.outAnimation, outP, sizes, isShape);
    return a;
}

double ItemAnimation::drawProgress(const MediaItem& item, double t) {
    double d = item.animationDuration;
    double p = 1;
    if (item.inAnimation == MediaAnimation::draw && d > 0) p = clamp01((t - item.start) / d);
    if (item.outAnimation == MediaAnimation::draw) {
        double q = d > 0 ? clamp01((item.end - t) / d) : 1;
        p = std::min(p, q);
    }
    return clamp01(p);
}

double ItemAnimation::drawSteps(const MediaItem& item, double t) {
    return std::round(drawProgress(item, t) * 100) / 100;
}

} // namespace recorder
