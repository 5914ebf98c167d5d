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
#include "timeline/ClipTime.h"

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

    // The timeline's queries and edits (defined in timeline/Project*.cpp).
    // Output time runs on the finished video, source time inside the
    // recording's file; clips play back to back from screenStart.

    // Like duration(), but hidden media items count too.
    double extent() const;
    std::optional<double> outputTime(double sourceTime) const;
    std::optional<ClipTime> sourceTime(double outputTime) const;
    std::optional<double> clipStart(const Uuid& clipID) const;
    const ZoomSegment* activeZoom(double at) const;
    CameraLayout cameraLayout(double at) const;
    const Asset* asset(AssetKind kind) const;
    bool hasCamera() const;
    // In ascending zIndex; audio items are never visible.
    std::vector<const MediaItem*> visibleMedia(double at) const;
    std::vector<const MediaItem*> audibleMedia() const;

    // Edits of the timeline. Each keeps zooms, keyframes and media where
    // they belong in output time; arguments that are NaN change nothing.
    void splitClip(double at);
    void deleteRange(double a, double b);
    void trim(double a, double b);
    void rejoinClip(const Uuid& clipID);
    void setClipSpeed(const Uuid& clipID, double speed);
    void setMediaSpeed(const Uuid& itemID, double speed);
    void shiftRecording(double delta);
    void insertLeadingGap(double delta);
    void closeLeadingGap();

    void addIntro(MediaItem item);
    void addOutro(MediaItem item);
    void addMedia(MediaItem item);
    void updateMedia(const MediaItem& item);
    void removeMedia(const Uuid& itemID);

    void addZoom(ZoomSegment zoom);
    void updateZoom(const ZoomSegment& zoom);
    void removeZoom(const Uuid& zoomID);
    void replaceAutoZooms(std::vector<ZoomSegment> zooms);
    void setZoomScale(const Uuid& zoomID, double scale);

    bool operator==(const Project&) const = default;

    static Project fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
