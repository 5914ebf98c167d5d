#include "model/ZoomSegment.h"

namespace recorder {

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
