#pragma once

#include "model/Point.h"
#include "model/RGBAColor.h"

#include <optional>
#include <string>

namespace recorder {

enum class WatermarkPlacement {
    bottomRight, bottomLeft, topRight, topLeft, middleLeft, middleRight, topCenter, bottomCenter, center
};

template <>
struct EnumNames<WatermarkPlacement> {
    static constexpr std::array<std::string_view, 9> names{"bottomRight", "bottomLeft",  "topRight",
                                                           "topLeft",     "middleLeft",  "middleRight",
                                                           "topCenter",   "bottomCenter", "center"};
};

// The older four-corner form; each maps to the placement of the same name.
enum class WatermarkPosition { topLeft, topRight, bottomLeft, bottomRight };

template <>
struct EnumNames<WatermarkPosition> {
    static constexpr std::array<std::string_view, 4> names{"topLeft", "topRight", "bottomLeft", "bottomRight"};
};

// The person's own mark, and whether the product's mark is shown beside it.
struct WatermarkSettings {
    bool enabled = true;
    std::string text;
    std::optional<Uuid> imageAssetID;
    std::optional<std::string> fontName;
    double size = 0.03;
    bool bold = true;
    bool italic = false;
    bool uppercase = false;
    RGBAColor textColor{1, 1, 1, 1};
    bool shadow = true;
    double opacity = 0.9;
    bool boxEnabled = false;
    RGBAColor boxColor{0, 0, 0, 1};
    double boxOpacity = 0.5;
    WatermarkPlacement placement = WatermarkPlacement::bottomRight;
    bool showBrand = false;
    std::optional<WatermarkPlacement> brandPlacement;
    std::optional<Point> position;
    std::optional<Point> brandPosition;

    bool operator==(const WatermarkSettings&) const = default;

    static WatermarkSettings fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
