#pragma once

#include "json/JsonReader.h"
#include "model/RGBAColor.h"

#include <variant>

namespace recorder {

// Written as an object with one key, the case name, holding the payload.
struct BackgroundStyle {
    struct Solid {
        RGBAColor color;
        bool operator==(const Solid&) const = default;
    };
    struct Gradient {
        RGBAColor from;
        RGBAColor to;
        double angle = 0;
        bool operator==(const Gradient&) const = default;
    };
    struct Image {
        Uuid assetID;
        bool operator==(const Image&) const = default;
    };
    struct BlurredWallpaper {
        Uuid assetID;
        double blurRadius = 0;
        bool operator==(const BlurredWallpaper&) const = default;
    };

    std::variant<Solid, Gradient, Image, BlurredWallpaper> value;

    static BackgroundStyle defaultGradient();

    bool operator==(const BackgroundStyle&) const = default;

    static BackgroundStyle fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
