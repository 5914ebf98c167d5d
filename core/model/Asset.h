#pragma once

#include "json/JsonReader.h"
#include "model/Rect.h"
#include "model/Size.h"

#include <optional>
#include <string>

namespace recorder {

// The first five are parts of a recording; the rest are kinds of overlay.
enum class AssetKind { screen, camera, microphone, systemAudio, events, image, gif, video, audio, text, blur, shape };

template <>
struct EnumNames<AssetKind> {
    static constexpr std::array<std::string_view, 12> names{"screen", "camera", "microphone", "systemAudio",
                                                            "events", "image",  "gif",        "video",
                                                            "audio",  "text",   "blur",       "shape"};
};

struct Asset {
    Uuid id;
    AssetKind kind = AssetKind::screen;
    std::string relativePath;
    std::optional<double> duration;
    std::optional<Size> pixelSize;
    double startOffset = 0;
    std::optional<Rect> captureRect;
    std::optional<double> scaleFactor;
    std::optional<std::string> originalFilename;

    bool operator==(const Asset&) const = default;

    static Asset fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
