#pragma once

#include "model/RGBAColor.h"

namespace recorder {

enum class ShapeKind { arrow, line, rectangle, ellipse };

template <>
struct EnumNames<ShapeKind> {
    static constexpr std::array<std::string_view, 4> names{"arrow", "line", "rectangle", "ellipse"};
};

enum class ShapeDirection { right, downRight, down, downLeft, left, upLeft, up, upRight };

template <>
struct EnumNames<ShapeDirection> {
    static constexpr std::array<std::string_view, 8> names{"right", "downRight", "down", "downLeft",
                                                           "left",  "upLeft",    "up",   "upRight"};
};

struct ShapeSpec {
    ShapeKind kind = ShapeKind::arrow;
    RGBAColor color{1, 0.23, 0.19, 1};
    double strokeWidth = 0.006; // fraction of canvas height
    ShapeDirection direction = ShapeDirection::right;
    double headSize = 3.5; // multiples of the stroke
    bool filled = false;
    double fillOpacity = 0.3;
    bool strokeless = false;
    double cornerRadius = 0.1; // fraction of the shorter side, at most 0.5
    bool outline = false;
    bool shadow = true;

    bool operator==(const ShapeSpec&) const = default;

    static ShapeSpec fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
