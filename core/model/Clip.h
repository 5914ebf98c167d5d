#pragma once

#include "json/JsonReader.h"

#include <algorithm>

namespace recorder {

// A stretch of a recording's file, in source seconds, played at `speed`.
struct Clip {
    Uuid id;
    Uuid assetID;
    double sourceStart = 0;
    double sourceEnd = 0;
    double speed = 1;

    double outputDuration() const { return std::max(0.0, sourceEnd - sourceStart) / speed; }

    bool operator==(const Clip&) const = default;

    static Clip fromJson(const JsonReader& r) {
        return {r.get<Uuid>("id"), r.get<Uuid>("assetID"), r.get<double>("sourceStart"), r.get<double>("sourceEnd"),
                r.get<double>("speed")};
    }
    nlohmann::json toJson() const {
        return {{"id", encodeJson(id)},
                {"assetID", encodeJson(assetID)},
                {"sourceStart", sourceStart},
                {"sourceEnd", sourceEnd},
                {"speed", speed}};
    }
};

} // namespace recorder
