#pragma once

#include "model/Point.h"

namespace recorder {

// Deltas as the platform's event delivered them.
struct ScrollEvent {
    double time = 0;
    Point position;
    double deltaX = 0;
    double deltaY = 0;

    bool operator==(const ScrollEvent&) const = default;

    static ScrollEvent fromJson(const JsonReader& r) {
        return {r.get<double>("time"), r.get<Point>("position"), r.get<double>("deltaX"), r.get<double>("deltaY")};
    }
    nlohmann::json toJson() const {
        return {{"time", time}, {"position", position.toJson()}, {"deltaX", deltaX}, {"deltaY", deltaY}};
    }
};

} // namespace recorder
