#pragma once

#include "model/Asset.h"
#include "model/RGBAColor.h"
#include "model/Rect.h"
#include "model/ShapeSpec.h"
#include "model/TextStyle.h"

#include <optional>
#include <string>

namespace recorder {

enum class MediaAnimation { none, fade, pop, slideUp, slideDown, slideLeft, slideRight, shake, bounce, draw };

template <>
struct EnumNames<MediaAnimation> {
    static constexpr std::array<std::string_view, 10> names{"none",       "fade",  "pop",    "slideUp", "slideDown",
                                                            "slideLeft", "slideRight", "shake", "bounce", "draw"};
};

// One overlay or added sound on the timeline, in output seconds.
struct MediaItem {
    Uuid id;
    Uuid assetID;
    AssetKind kind = AssetKind::image;
    std::string name;
    double start = 0;
    double end = 0;
    Rect frame{0.3, 0.3, 0.4, 0.4};
    double rotation = 0;
    double opacity = 1;
    MediaAnimation inAnimation = MediaAnimation::none;
    MediaAnimation outAnimation = MediaAnimation::none;
    double animationDuration = 0.3;
    bool shadow = false;
    double borderWidth = 0;
    RGBAColor borderColor{1, 1, 1, 1};
    double cornerRadius = 0;
    double volume = 1;
    double fadeIn = 0;
    double fadeOut = 0;
    double sourceOffset = 0;
    int zIndex = 0;
    bool loops = false;
    bool hidden = false;
    bool locked = false;
    bool muted = false;
    double speed = 1;
    std::optional<std::string> text;
    std::optional<RGBAColor> textColor;
    std::optional<TextStyle> textStyle;
    std::optional<ShapeSpec> shape;
    std::optional<std::string> blurStyle;
    std::optional<double> blurAmount;

    bool contains(double t) const { return start <= t && t < end; }
    double sourceTime(double t) const { return (t - start) * speed + sourceOffset; }
    double length() const;
    double gain(double t) const;
    MediaItem shifted(double delta) const;

    bool operator==(const MediaItem&) const = default;

    static MediaItem fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
