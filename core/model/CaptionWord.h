#pragma once

#include "json/JsonReader.h"

#include <optional>
#include <string>

namespace recorder {

// One recognised word, in source seconds. `lineStart` is the person's choice:
// true forces a line break at the word, false forbids one.
struct CaptionWord {
    Uuid id;
    std::string text;
    double start = 0;
    double end = 0;
    std::optional<bool> lineStart;

    bool operator==(const CaptionWord&) const = default;

    static CaptionWord fromJson(const JsonReader& r) {
        return {r.get<Uuid>("id"), r.get<std::string>("text"), r.get<double>("start"), r.get<double>("end"),
                r.getOptional<bool>("lineStart")};
    }
    nlohmann::json toJson() const {
        nlohmann::json j{{"id", encodeJson(id)}, {"text", text}, {"start", start}, {"end", end}};
        putOptional(j, "lineStart", lineStart);
        return j;
    }
};

} // namespace recorder
