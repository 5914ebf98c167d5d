#pragma once

#include "events/EventLog.h"
#include "model/Project.h"
#include "model/ZoomSegment.h"

#include <vector>

namespace recorder {

// Turns clicks and key presses into zoom segments: move in where the person
// works, pan when they wander, move out when they stop. A pure function of
// its fields, the log and the project; the defaults are what every caller uses.
struct AutoZoomGenerator {
    double zoom = 2.0;
    double holdAfterLastClick = 1.6;
    double mergeGap = 2.5;
    double inDuration = 1.2;
    double outDuration = 1.2;
    double minimumDuration = 2.8;
    double panThreshold = 0.12;

    // In time order, without overlaps, possibly empty; every segment is new,
    // `easeInOut` and automatic.
    std::vector<ZoomSegment> generate(const EventLog& log, const Project& project) const;
};

} // namespace recorder
