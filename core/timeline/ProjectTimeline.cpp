// Project's timeline queries: the two clocks and what stands at a time.
#include "model/Project.h"
#include "model/TimeOrder.h"
#include "timeline/ClipWalk.h"

#include <algorithm>

namespace recorder {

double Project::extent() const {
    double end = recordingEnd();
    for (const auto& item : media) end = std::max(end, item.end);
    return end;
}

std::optional<double> Project::outputTime(double sourceTime) const {
    std::optional<double> found;
    // Both ends inclusive; where a source stretch plays twice the earlier clip wins.
    walkClips(clips, screenStart, [&](std::size_t i, double start, double) {
        const Clip& clip = clips[i];
        if (clip.sourceStart <= sourceTime && sourceTime <= clip.sourceEnd)
            found = start + (sourceTime - clip.sourceStart) / clip.speed;
        return found.has_value();
    });
    return found;
}

std::optional<ClipTime> Project::sourceTime(double outputTime) const {
    if (outputTime < screenStart - 1e-9) return std::nullopt;
    std::optional<ClipTime> found;
    // A seam belongs to the later clip; the very end belongs to the last one.
    walkClips(clips, screenStart, [&](std::size_t i, double start, double next) {
        bool last = i + 1 == clips.size();
        if (next > outputTime || (last && next + 1e-9 >= outputTime)) {
            const Clip& clip = clips[i];
            double u = std::min(clip.outputDuration(), std::max(0.0, outputTime - start));
            found = ClipTime{clip, clip.sourceStart + clip.speed * u};
        }
        return found.has_value();
    });
    return found;
}

std::optional<double> Project::clipStart(const Uuid& clipID) const {
    std::optional<double> found;
    walkClips(clips, screenStart, [&](std::size_t i, double start, double) {
        if (clips[i].id == clipID) found = start;
        return found.has_value();
    });
    return found;
}

const ZoomSegment* Project::activeZoom(double at) const {
    if (tracks.zooms.hidden) return nullptr;
    // Half-open, and the earlier in the array wins where segments overlap.
    for (const auto& zoom : zooms)
        if (zoom.start <= at && at < zoom.end) return &zoom;
    return nullptr;
}

CameraLayout Project::cameraLayout(double at) const {
    if (tracks.camera.hidden) return CameraLayout::hidden;
    auto sorted = camera.keyframes;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return earlierTime(a.time, b.time); });
    CameraLayout layout = camera.layout;
    for (const auto& keyframe : sorted)
        if (keyframe.time <= at) layout = keyframe.layout;
    return layout;
}

const Asset* Project::asset(AssetKind kind) const {
    auto it = std::find_if(assets.begin(), assets.end(), [&](const Asset& a) { return a.kind == kind; });
    return it == assets.end() ? nullptr : &*it;
}

bool Project::hasCamera() const {
    return asset(AssetKind::camera) || (camera.showAvatar && camera.avatarAssetID.has_value());
}

std::vector<const MediaItem*> Project::visibleMedia(double at) const {
    std::vector<const MediaItem*> visible;
    for (const auto& item : media) {
        bool showing = item.start <= at && item.end > at;
        if (showing && item.kind != AssetKind::audio && !item.hidden) visible.push_back(&item);
    }
    std::stable_sort(visible.begin(), visible.end(), [](auto a, auto b) { return a->zIndex < b->zIndex; });
    return visible;
}

std::vector<const MediaItem*> Project::audibleMedia() const {
    std::vector<const MediaItem*> audible;
    for (const auto& item : media)
        if ((item.kind == AssetKind::audio || item.kind == AssetKind::video) && !item.hidden && !item.muted)
            audible.push_back(&item);
    return audible;
}

} // namespace recorder
