#include "motion/CameraMotion.h"

#include "model/TimeOrder.h"
#include "motion/Layout.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace recorder::CameraMotion {

namespace {

constexpr double pi = std::numbers::pi;

double quadInOut(double p) { return p < 0.5 ? 2 * p * p : 1 - 0.5 * (2 - 2 * p) * (2 - 2 * p); }
double back(double p) { return 1 + 2.70158 * std::pow(p - 1, 3) + 1.70158 * std::pow(p - 1, 2); }
double out(double p) { return 1 - std::pow(1 - p, 3); }

Rect blend(const Rect& a, const Rect& b, double e) {
    return {a.x + (b.x - a.x) * e, a.y + (b.y - a.y) * e, a.width + (b.width - a.width) * e,
            a.height + (b.height - a.height) * e};
}

struct Canvas {
    double width;
    double height;
    double cameraAspect;
    double screenAspect;
    double padding;
    double bubbleSize;

    std::optional<Rect> camera(CameraLayout layout) const {
        return Layout::cameraRect(layout, width, height, bubbleSize, cameraAspect, Layout::cameraMargin(width, height));
    }
    Rect screen(CameraLayout layout) const { return Layout::screenFrame(layout, width, height, screenAspect, padding); }
};

CameraMotionState resting(CameraLayout layout, const Canvas& canvas) {
    CameraMotionState s;
    s.from = s.to = layout;
    s.rect = canvas.camera(layout);
    s.screenFrame = canvas.screen(layout);
    s.screenVisible = layout != CameraLayout::fullScreen;
    return s;
}

void leave(CameraMotionState& s, CameraTransition transition, double p, const Canvas& canvas) {
    double c = p * p * p;
    s.rect = canvas.camera(s.from);
    s.scale = 1 - c;
    bool spins = transition == CameraTransition::spin || transition == CameraTransition::twirl;
    s.rotation = spins ? 2 * pi * c : 0;
    s.flipX = transition == CameraTransition::flip ? std::cos(c * pi / 2) : 1;
    s.radiusMix = 0;
}

void enter(CameraMotionState& s, CameraTransition transition, double p, const Canvas& canvas) {
    s.rect = canvas.camera(s.to);
    bool pops = transition == CameraTransition::pop || transition == CameraTransition::bounce;
    s.scale = pops ? std::max(back(p), 0.0) : out(p);
    bool spins = transition == CameraTransition::spin || transition == CameraTransition::twirl;
    s.rotation = spins ? 2 * pi * std::pow(1 - p, 3) : 0;
    s.flipX = transition == CameraTransition::flip ? std::sin(out(p) * pi / 2) : 1;
    s.radiusMix = 1;
}

// Shrinks away at the old place, then grows at the new one.
void hop(CameraMotionState& s, CameraTransition transition, double p, const Canvas& canvas) {
    bool twirl = transition == CameraTransition::twirl;
    s.flipX = 1;
    if (p < 0.5) {
        double c = std::pow(2 * p, 3);
        s.rect = canvas.camera(s.from);
        s.scale = 1 - c;
        s.rotation = twirl ? c * pi : 0;
        s.radiusMix = 0;
        return;
    }
    double q = 2 * p - 1;
    s.rect = canvas.camera(s.to);
    s.radiusMix = 1;
    s.scale = twirl ? std::max(out(q), 0.0) : std::max(back(q), 0.0);
    s.rotation = twirl ? out(q) * pi + pi : 0;
}

// Slides from one place to the other; `flip` ends mirrored at −1 on purpose.
void move(CameraMotionState& s, CameraTransition transition, double p, double e, const Canvas& canvas) {
    s.rect = blend(*canvas.camera(s.from), *canvas.camera(s.to), e);
    s.scale = 1;
    s.rotation = transition == CameraTransition::spin ? 2 * pi * e : 0;
    s.flipX = transition == CameraTransition::flip ? std::cos(p * pi) : 1;
    s.radiusMix = e;
}

} // namespace

CameraMotionState state(double at, double canvasWidth, double canvasHeight, double cameraAspect, double screenAspect,
                        double padding, const CameraSettings& settings, bool hidden) {
    Canvas canvas{canvasWidth, canvasHeight, cameraAspect, screenAspect, padding, settings.bubbleSize};
    if (hidden) return resting(CameraLayout::hidden, canvas);

    auto keyframes = settings.keyframes;
    std::stable_sort(keyframes.begin(), keyframes.end(),
                     [](const auto& a, const auto& b) { return earlierTime(a.time, b.time); });
    CameraLayout from = settings.layout;
    CameraLayout to = settings.layout;
    double lastTime = -std::numeric_limits<double>::infinity();
    for (const auto& keyframe : keyframes) {
        if (!(keyframe.time <= at)) continue;
        from = to;
        to = keyframe.layout;
        lastTime = keyframe.time;
    }

    CameraTransition transition = settings.effectiveTransition();
    double duration = settings.effectiveTransitionDuration();
    double elapsed = at - lastTime;
    // Written as "not under" so that a NaN elapsed time rests too.
    if (transition == CameraTransition::instant || from == to || !(elapsed < duration)) return resting(to, canvas);

    double p = std::clamp(elapsed / duration, 0.0, 1.0);
    double e = transition == CameraTransition::bounce ? back(p) : quadInOut(p);
    CameraMotionState s;
    s.from = from;
    s.to = to;
    s.progress = p;
    Rect fromFrame = canvas.screen(from);
    Rect toFrame = canvas.screen(to);
    s.screenFrame = fromFrame == toFrame ? fromFrame : blend(fromFrame, toFrame, quadInOut(p));
    s.screenVisible = from != CameraLayout::fullScreen || to != CameraLayout::fullScreen;

    bool fromHidden = from == CameraLayout::hidden;
    bool toHidden = to == CameraLayout::hidden;
    if (fromHidden && toHidden) {
        s.rect = std::nullopt;
        s.radiusMix = e;
    } else if (toHidden) {
        leave(s, transition, p, canvas);
    } else if (fromHidden) {
        enter(s, transition, p, canvas);
    } else if (transition == CameraTransition::pop || transition == CameraTransition::twirl) {
        hop(s, transition, p, canvas);
    } else {
        move(s, transition, p, e, canvas);
    }
    return s;
}

} // namespace recorder::CameraMotion
