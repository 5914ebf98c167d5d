#pragma once

#include "json/JsonReader.h"

namespace recorder {

struct TrackFlags {
    bool hidden = false;
    bool locked = false;

    bool operator==(const TrackFlags&) const = default;

    static TrackFlags fromJson(const JsonReader& r) { return {r.get<bool>("hidden"), r.get<bool>("locked")}; }
    nlohmann::json toJson() const { return {{"hidden", hidden}, {"locked", locked}}; }
};

// Hide and lock state of the fixed lanes.
struct TrackSettings {
    TrackFlags screen;
    TrackFlags zooms;
    TrackFlags camera;

    bool operator==(const TrackSettings&) const = default;

    static TrackSettings fromJson(const JsonReader& r) {
        return {r.get<TrackFlags>("screen"), r.get<TrackFlags>("zooms"), r.get<TrackFlags>("camera")};
    }
    nlohmann::json toJson() const {
        return {{"screen", screen.toJson()}, {"zooms", zooms.toJson()}, {"camera", camera.toJson()}};
    }
};

} // namespace recorder
