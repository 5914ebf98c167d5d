// Project's edits of the recording's clips: split, cut, trim, speed, shift.
#include "model/Project.h"
#include "timeline/ClipWalk.h"

#include <algorithm>
#include <cmath>

namespace recorder {

namespace {

template <class T, class Keep>
void keepOnly(std::vector<T>& list, Keep keep) {
    list.erase(std::remove_if(list.begin(), list.end(), [&](T& element) { return !keep(element); }), list.end());
}

// Every zoom and camera keyframe moves with the recording.
void shiftTimedThings(Project& p, double delta) {
    for (auto& zoom : p.zooms) zoom = zoom.shifted(delta);
    for (auto& keyframe : p.camera.keyframes) keyframe.time += delta;
}

// A zoom that touches the cut goes whole; it is never shortened.
void cutZooms(Project& p, double a, double b) {
    double d = b - a;
    keepOnly(p.zooms, [&](ZoomSegment& zoom) {
        if (zoom.end <= a) return true;
        if (zoom.start >= b) {
            zoom = zoom.shifted(-d);
            return true;
        }
        return false;
    });
}

// Media is cut on the timeline only: sourceOffset never changes.
void cutMedia(Project& p, double a, double b) {
    double d = b - a;
    keepOnly(p.media, [&](MediaItem& item) {
        if (item.end <= a) return true;
        if (item.start >= b) {
            item = item.shifted(-d);
            return true;
        }
        if (item.start >= a) {
            item.start = a;
            item.end = std::max(a, item.end - d);
            return item.end - item.start > 0.1;
        }
        if (item.end > b) {
            item.end -= d;
            return true;
        }
        item.end = a;
        return a - item.start > 0.1;
    });
}

void cutCameraKeyframes(Project& p, double a, double b) {
    keepOnly(p.camera.keyframes, [&](CameraLayoutKeyframe& keyframe) {
        if (keyframe.time < a) return true;
        if (keyframe.time >= b) {
            keyframe.time -= b - a;
            return true;
        }
        return false;
    });
}

} // namespace

void Project::splitClip(double at) {
    std::optional<std::size_t> index;
    double cut = 0;
    walkClips(clips, screenStart, [&](std::size_t i, double start, double next) {
        if (start + 0.05 < at && next - 0.05 > at) {
            index = i;
            cut = clips[i].sourceStart + clips[i].speed * (at - start);
        }
        return index.has_value();
    });
    if (!index) return;
    Clip second = clips[*index];
    second.id = Uuid::random();
    second.sourceStart = cut;
    clips[*index].sourceEnd = cut;
    clips.insert(clips.begin() + static_cast<std::ptrdiff_t>(*index) + 1, second);
}

void Project::deleteRange(double a, double b) {
    if (!(a < b) || !std::isfinite(a) || !std::isfinite(b)) return;
    splitClip(a);
    splitClip(b);
    std::vector<Clip> kept;
    walkClips(clips, screenStart, [&](std::size_t i, double start, double next) {
        if (!(a - 1e-6 <= start && next <= b + 1e-6)) kept.push_back(clips[i]);
        return false;
    });
    clips = std::move(kept);
    // The part of the cut in front of the recording leaves the leading gap.
    screenStart -= std::max(0.0, std::min(screenStart, b) - a);
    cutZooms(*this, a, b);
    cutMedia(*this, a, b);
    cutCameraKeyframes(*this, a, b);
}

void Project::trim(double a, double b) {
    // The tail goes first so that a and b stay valid.
    if (duration() > b) deleteRange(b, duration());
    if (a > 0) deleteRange(0, a);
}

void Project::rejoinClip(const Uuid& clipID) {
    auto it = std::find_if(clips.begin(), clips.end(), [&](const Clip& c) { return c.id == clipID; });
    if (it == clips.end() || it + 1 == clips.end()) return;
    const Clip& next = *(it + 1);
    if (it->assetID != next.assetID || !(std::fabs(it->sourceEnd - next.sourceStart) < 1e-6) ||
        it->speed != next.speed)
        return;
    it->sourceEnd = next.sourceEnd;
    clips.erase(it + 1);
}

void Project::setClipSpeed(const Uuid& clipID, double speed) {
    if (std::isnan(speed)) return;
    for (auto& clip : clips)
        if (clip.id == clipID) clip.speed = std::clamp(speed, 0.1, 16.0);
}

void Project::setMediaSpeed(const Uuid& itemID, double speed) {
    if (std::isnan(speed)) return;
    speed = std::clamp(speed, 0.1, 16.0);
    for (auto& item : media) {
        if (item.id != itemID) continue;
        if (item.kind != AssetKind::video && item.kind != AssetKind::audio && item.kind != AssetKind::gif) continue;
        // Keep showing the same stretch of the file.
        item.end = item.start + std::max(0.2, item.length() * item.speed / speed);
        item.speed = speed;
    }
}

void Project::shiftRecording(double delta) {
    if (!std::isfinite(delta)) return;
    double shift = std::max(delta, -screenStart);
    if (!(std::fabs(shift) > 1e-9)) return;
    double oldStart = screenStart;
    screenStart += shift;
    shiftTimedThings(*this, shift);
    // Intros in the leading gap stay where they are.
    for (auto& item : media)
        if (item.start >= oldStart - 1e-6) item = item.shifted(shift);
}

void Project::insertLeadingGap(double delta) {
    if (!(delta > 0) || !std::isfinite(delta)) return;
    screenStart += delta;
    shiftTimedThings(*this, delta);
    for (auto& item : media) item = item.shifted(delta);
}

void Project::closeLeadingGap() {
    double gap = screenStart;
    for (const auto& item : media) gap = std::min(gap, item.start);
    if (!(gap > 1e-6) || !std::isfinite(gap)) return;
    screenStart -= gap;
    shiftTimedThings(*this, -gap);
    for (auto& item : media) item = item.shifted(-gap);
}

} // namespace recorder
