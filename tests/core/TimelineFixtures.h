#pragma once

#include "model/Project.h"

#include <initializer_list>
#include <utility>

namespace recorder::test {

// A project whose screen asset plays the given source stretches back to back.
inline Project projectWithClips(std::initializer_list<std::pair<double, double>> stretches, double screenStart = 0,
                                double speed = 1) {
    Project p("Test", CanvasSettings{1920, 1080, 60}, "1.0");
    Asset screen;
    screen.id = Uuid::random();
    screen.kind = AssetKind::screen;
    screen.relativePath = "screen.mov";
    p.assets.push_back(screen);
    for (auto [from, to] : stretches) p.clips.push_back({Uuid::random(), screen.id, from, to, speed});
    p.screenStart = screenStart;
    return p;
}

inline ZoomSegment zoomSegment(double start, double end, Rect rect = {0.25, 0.25, 0.5, 0.5}) {
    ZoomSegment z;
    z.id = Uuid::random();
    z.start = start;
    z.end = end;
    z.rect = rect;
    z.inDuration = 1;
    z.outDuration = 1;
    return z;
}

inline MediaItem mediaItem(double start, double end, AssetKind kind = AssetKind::image) {
    MediaItem m;
    m.id = Uuid::random();
    m.assetID = Uuid::random();
    m.kind = kind;
    m.name = "item";
    m.start = start;
    m.end = end;
    return m;
}

inline CameraLayoutKeyframe cameraKeyframe(double time, CameraLayout layout) { return {Uuid::random(), time, layout}; }

} // namespace recorder::test
