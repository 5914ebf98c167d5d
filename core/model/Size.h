#pragma once

#include "json/JsonReader.h"

namespace recorder {

struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;

    static Size fromJson(const JsonReader& r) { return {r.get<double>("width"), r.get<double>("height")}; }
    nlohmann::json toJson() const { return {{"width", width}, {"height", height}}; }
};

} // namespace recorder
