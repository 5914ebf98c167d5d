#pragma once

#include "model/Asset.h"
#include "model/AudioSettings.h"
#include "model/CameraSettings.h"
#include "model/CanvasSettings.h"
#include "model/CaptionTrack.h"
#include "model/Clip.h"
#include "model/CursorSettings.h"
#include "model/Date.h"
#include "model/MediaItem.h"
#include "model/StyleSettings.h"
#include "model/TrackSettings.h"
#include "model/WatermarkSettings.h"
#include "model/ZoomSegment.h"

#include <optional>
#include <string>
#include <vector>

namespace recorder {

// The edit document: everything decided about one recording, as one value.
// It names files in its package and holds no live objects, so undo can keep
// whole copies of it.
struct Project {
    static constexpr int currentSchemaVersion = 12;

    int schemaVersion = currentSchemaVersion;
    Uuid id;
    std::string name;
    Date createdAt;
    Date modifiedAt;
    std::string appVersion;
    CanvasSettings canvas;
    std::vector<Asset> assets;
    std::vector<Clip> clips;
    double screenStart = 0;
    std::vector<ZoomSegment> zooms;
    StyleSettings style;
    CursorSettings cursor;
    CameraSettings camera;
    std::vector<MediaItem> media;
    AudioSettings audio;
    TrackSettings tracks;
    std::optional<CaptionTrack> captions;
    std::optional<WatermarkSettings> watermark;
    std::optional<std::string> packageFileName;
    std::optional<bool> fromVideo;
    std::optional<CaptionStyle> captionStyle;
    std::optional<std::string> styleName;

    Project() = default;
    Project(std::string name, CanvasSettings canvas, std::string appVersion);

    double clipsDuration() const;
    double recordingEnd() const { return screenStart + clipsDuration(); }
    // The finished video's length: the recording or the last visible item.
    double duration() const;

    const Asset* asset(const Uuid& assetID) const;

    bool operator==(const Project&) const = default;

    static Project fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
