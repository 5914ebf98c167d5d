#include "motion/AutoZoomGenerator.h"

#include "model/TimeOrder.h"

#include <algorithm>
#include <cmath>

namespace recorder {

namespace {

// One event on the output clock.
struct Point3 {
    double t;
    Point p;
};

struct Cluster {
    Point3 first;
    double latest;
    std::vector<ZoomKeyframe> keyframes;
};

std::vector<Point3> collectEvents(const EventLog& log, const Project& project) {
    std::vector<Point3> events;
    events.reserve(log.clicks.size() + log.keys.size());
    for (const auto& click : log.clicks) {
        if (!click.isDown) continue;
        if (auto t = project.outputTime(click.time)) events.push_back({*t, click.position});
    }
    // Typing pulls the zoom to wherever the pointer rests.
    for (const auto& key : log.keys) {
        if (!key.isDown) continue;
        auto t = project.outputTime(key.time);
        auto p = log.samplePosition(key.time);
        if (t && p) events.push_back({*t, *p});
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const Point3& a, const Point3& b) { return earlierTime(a.t, b.t); });
    return events;
}

} // namespace

std::vector<ZoomSegment> AutoZoomGenerator::generate(const EventLog& log, const Project& project) const {
    std::vector<Point3> events = collectEvents(log, project);
    if (events.empty()) return {};

    double w = 1 / std::max(zoom, 1.01);
    double s = std::clamp(w, 0.01, 1.0);
    auto rectAround = [&](Point p) {
        return Rect{std::min(1 - s, std::max(0.0, p.x - w / 2)), std::min(1 - s, std::max(0.0, p.y - w / 2)), s, s};
    };
    double recordingEnd = project.recordingEnd();

    std::vector<ZoomSegment> emitted;
    auto close = [&](Cluster& cluster) {
        // The move begins before the first event and ends on it.
        double start = std::max(0.0, cluster.first.t - 0.6 * inDuration);
        double end = cluster.latest + holdAfterLastClick;
        if (end - start < minimumDuration) end = start + minimumDuration;
        end = std::min(end, recordingEnd);
        if (!(start < end)) return;
        emitted.push_back({Uuid::random(), start, end, rectAround(cluster.first.p), inDuration, outDuration,
                           Easing::easeInOut, true, std::move(cluster.keyframes)});
    };

    Cluster cluster{events.front(), events.front().t, {}};
    for (std::size_t i = 1; i < events.size(); ++i) {
        const Point3& event = events[i];
        if (event.t - cluster.latest > mergeGap) {
            close(cluster);
            cluster = Cluster{event, event.t, {}};
            continue;
        }
        // An event near the view adds nothing, so small moves don't shake the picture.
        Rect view = cluster.keyframes.empty() ? rectAround(cluster.first.p) : cluster.keyframes.back().rect;
        double dx = event.p.x - view.midX();
        double dy = event.p.y - view.midY();
        double d = std::sqrt(dx * dx + dy * dy);
        if (d > panThreshold) cluster.keyframes.push_back({Uuid::random(), event.t, rectAround(event.p)});
        cluster.latest = event.t;
    }
    close(cluster);

    std::vector<ZoomSegment> result;
    for (auto& segment : emitted) {
        if (!result.empty() && segment.start < result.back().end) segment.start = result.back().end;
        if (segment.end - segment.start >= 0.5) result.push_back(std::move(segment));
    }
    return result;
}

} // namespace recorder
