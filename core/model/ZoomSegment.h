#pragma once

#include "json/JsonReader.h"
#include "model/Easing.h"
#include "model/Rect.h"

#include <vector>

namespace recorder {

// A pan target inside a zoom segment, in output seconds.
struct ZoomKeyframe {
    Uuid id;
    double time = 0;
    Rect rect;

    bool operator==(const ZoomKeyframe&) const = default;

    static ZoomKeyframe fromJson(const JsonReader& r) {
        return {r.get<Uuid>("id"), r.get<double>("time"), r.get<Rect>("rect")};
    }
    nlohmann::json toJson() const { return {{"id", encodeJson(id)}, {"time", time}, {"rect", rect.toJson()}}; }
};

struct ZoomSegment {
    Uuid id;
    double start = 0;
    double end = 0;
    Rect rect = Rect::full();
    double inDuration = 0;
    double outDuration = 0;
    Easing easing = Easing::easeInOut;
    bool isAuto = false;
    std::vector<ZoomKeyframe> keyframes;

    // The rectangle of the moment with keyframes, without the in and out ramps.
    Rect targetRect(double at) const;
    // The rectangle to show, ramps included; the full frame outside the
    // segment. (`rect` alone is the stored field.)
    Rect rectAt(double at) const;
    ZoomSegment shifted(double delta) const;

    bool operator==(const ZoomSegment&) const = default;

    static ZoomSegment fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
