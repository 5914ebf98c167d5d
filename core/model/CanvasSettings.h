#pragma once

#include "json/JsonReader.h"

namespace recorder {

struct CanvasSettings {
    int width = 1920;
    int height = 1080;
    int frameRate = 60;

    bool operator==(const CanvasSettings&) const = default;

    static CanvasSettings fromJson(const JsonReader& r) {
        return {r.get<int>("width"), r.get<int>("height"), r.get<int>("frameRate")};
    }
    nlohmann::json toJson() const { return {{"width", width}, {"height", height}, {"frameRate", frameRate}}; }
};

} // namespace recorder
