#pragma once

#include "model/Point.h"

namespace recorder {

// Where the pointer was, in source seconds and fractions of the captured
// area (values outside 0...1 mean it was outside the area).
struct CursorSample {
    double time = 0;
    Point position;

    bool operator==(const CursorSample&) const = default;

    static CursorSample fromJson(const JsonReader& r) { return {r.get<double>("time"), r.get<Point>("position")}; }
    nlohmann::json toJson() const { return {{"time", time}, {"position", position.toJson()}}; }
};

} // namespace recorder
