#include "model/Project.h"

#include <algorithm>

namespace recorder {

Project::Project(std::string name, CanvasSettings canvas, std::string appVersion)
    : id(Uuid::random()), name(std::move(name)), createdAt(Date::now()), modifiedAt(createdAt),
      appVersion(std::move(appVersion)), canvas(canvas) {}

double Project::clipsDuration() const {
    double total = 0;
    for (const auto& clip : clips) total += clip.outputDuration();
    return total;
}

double Project::duration() const {
    double end = recordingEnd();
    for (const auto& item : media)
        if (!item.hidden) end = std::max(end, item.end);
    return end;
}

const Asset* Project::asset(const Uuid& assetID) const {
    auto it = std::find_if(assets.begin(), assets.end(), [&](const Asset& a) { return a.id == assetID; });
    return it == assets.end() ? nullptr : &*it;
}

Project Project::fromJson(const JsonReader& r) {
    Project p;
    p.schemaVersion = r.get<int>("schemaVersion");
    p.id = r.get<Uuid>("id");
    p.name = r.get<std::string>("name");
    p.createdAt = r.get<Date>("createdAt");
    p.modifiedAt = r.get<Date>("modifiedAt");
    p.appVersion = r.get<std::string>("appVersion");
    p.canvas = r.get<CanvasSettings>("canvas");
    p.assets = r.get<std::vector<Asset>>("assets");
    p.clips = r.get<std::vector<Clip>>("clips");
    p.screenStart = r.get<double>("screenStart");
    p.zooms = r.get<std::vector<ZoomSegment>>("zooms");
    p.style = r.get<StyleSettings>("style");
    p.cursor = r.get<CursorSettings>("cursor");
    p.camera = r.get<CameraSettings>("camera");
    p.media = r.get<std::vector<MediaItem>>("media");
    p.audio = r.get<AudioSettings>("audio");
    p.tracks = r.get<TrackSettings>("tracks");
    p.captions = r.getOptional<CaptionTrack>("captions");
    p.watermark = r.getOptional<WatermarkSettings>("watermark");
    p.packageFileName = r.getOptional<std::string>("packageFileName");
    p.fromVideo = r.getOptional<bool>("fromVideo");
    p.captionStyle = r.getOptional<CaptionStyle>("captionStyle");
    p.styleName = r.getOptional<std::string>("styleName");
    return p;
}

nlohmann::json Project::toJson() const {
    nlohmann::json j{{"schemaVersion", schemaVersion},
                     {"id", encodeJson(id)},
                     {"name", name},
                     {"createdAt", encodeJson(createdAt)},
                     {"modifiedAt", encodeJson(modifiedAt)},
                     {"appVersion", appVersion},
                     {"canvas", canvas.toJson()},
                     {"assets", encodeJson(assets)},
                     {"clips", encodeJson(clips)},
                     {"screenStart", screenStart},
                     {"zooms", encodeJson(zooms)},
                     {"style", style.toJson()},
                     {"cursor", cursor.toJson()},
                     {"camera", camera.toJson()},
                     {"media", encodeJson(media)},
                     {"audio", audio.toJson()},
                     {"tracks", tracks.toJson()}};
    putOptional(j, "captions", captions);
    putOptional(j, "watermark", watermark);
    putOptional(j, "packageFileName", packageFileName);
    putOptional(j, "fromVideo", fromVideo);
    putOptional(j, "captionStyle", captionStyle);
    putOptional(j, "styleName", styleName);
    return j;
}

} // namespace recorder
