#pragma once

#include "json/JsonReader.h"

namespace recorder {

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;

    static Point fromJson(const JsonReader& r) { return {r.get<double>("x"), r.get<double>("y")}; }
    nlohmann::json toJson() const { return {{"x", x}, {"y", y}}; }
};

} // namespace recorder
