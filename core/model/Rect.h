#pragma once

#include "json/JsonReader.h"

namespace recorder {

// Fractions of the frame unless a field says otherwise: origin top left, y down.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    static constexpr Rect full() { return {0, 0, 1, 1}; }

    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    double midX() const { return x + width / 2; }
    double midY() const { return y + height / 2; }

    bool operator==(const Rect&) const = default;

    static Rect fromJson(const JsonReader& r) {
        return {r.get<double>("x"), r.get<double>("y"), r.get<double>("width"), r.get<double>("height")};
    }
    nlohmann::json toJson() const { return {{"x", x}, {"y", y}, {"width", width}, {"height", height}}; }
};

} // namespace recorder
