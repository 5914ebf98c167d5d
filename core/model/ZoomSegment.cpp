#include "model/ZoomSegment.h"

#include "model/TimeOrder.h"

#include <algorithm>

namespace recorder {

namespace {

Rect blend(const Rect& a, const Rect& b, double e) {
    return {a.x + (b.x - a.x) * e, a.y + (b.y - a.y) * e, a.width + (b.width - a.width) * e,
            a.height + (b.height - a.height) * e};
}

bool byTime(const ZoomKeyframe& a, const ZoomKeyframe& b) { return earlierTime(a.time, b.time); }

} // namespace

Rect ZoomSegment::targetRect(double at) const {
    if (keyframes.empty()) return rect;
    // Keyframes are nearly always stored in order; copy only when they aren't.
    std::vector<ZoomKeyframe> reordered;
    const std::vector<ZoomKeyframe>* sorted = &keyframes;
    if (!std::is_sorted(keyframes.begin(), keyframes.end(), byTime)) {
        reordered = keyframes;
        std::stable_sort(reordered.begin(), reordered.end(), byTime);
        sorted = &reordered;
    }
    double prevTime = start;
    Rect prevRect = rect;
    for (const auto& k : *sorted) {
        if (k.time > at) {
            double span = k.time - prevTime;
            // Whatever the segment's own easing, pans always ease in and out.
            double e = span > 0 ? apply(Easing::easeInOut, std::clamp((at - prevTime) / span, 0.0, 1.0)) : 1;
            return blend(prevRect, k.rect, e);
        }
        prevTime = k.time;
        prevRect = k.rect;
    }
    return prevRect;
}

Rect ZoomSegment::rectAt(double at) const {
    if (at < start || at > end) return Rect::full();
    Rect target = targetRect(at);
    double d = end - start;
    double inD = std::min(inDuration, d / 2);
    double outD = std::min(outDuration, d / 2);
    if (at < start + inD) {
        double e = apply(easing, (at - start) / inD);
        return {target.x * e, target.y * e, 1 + (target.width - 1) * e, 1 + (target.height - 1) * e};
    }
    if (at > end - outD) {
        double e = apply(easing, (at - (end - outD)) / outD);
        return {target.x - target.x * e, target.y - target.y * e, target.width + (1 - target.width) * e,
                target.height + (1 - target.height) * e};
    }
    return target;
}

ZoomSegment ZoomSegment::shifted(double delta) const {
    ZoomSegment moved = *this;
    moved.start += delta;
    moved.end += delta;
    for (auto& keyframe : moved.keyframes) keyframe.time += delta;
    return moved;
}

ZoomSegment ZoomSegment::fromJson(const JsonReader& r) {
    ZoomSegment z;
    z.id = r.get<Uuid>("id");
    z.start = r.get<double>("start");
    z.end = r.get<double>("end");
    z.rect = r.get<Rect>("rect");
    z.inDuration = r.get<double>("inDuration");
    z.outDuration = r.get<double>("outDuration");
    z.easing = r.get<Easing>("easing");
    z.isAuto = r.get<bool>("isAuto");
    z.keyframes = r.get<std::vector<ZoomKeyframe>>("keyframes");
    return z;
}

nlohmann::json ZoomSegment::toJson() const {
    return {{"id", encodeJson(id)},
            {"start", start},
            {"end", end},
            {"rect", rect.toJson()},
            {"inDuration", inDuration},
            {"outDuration", outDuration},
            {"easing", encodeJson(easing)},
            {"isAuto", isAuto},
            {"keyframes", encodeJson(keyframes)}};
}

} // namespace recorder
