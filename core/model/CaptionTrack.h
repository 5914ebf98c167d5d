#pragma once

#include "model/CaptionStyle.h"
#include "model/CaptionWord.h"

#include <optional>
#include <string>
#include <vector>

namespace recorder {

// Words stay in source time and are never rewritten by cuts.
struct CaptionTrack {
    std::vector<CaptionWord> words;
    CaptionStyle style;
    bool hidden = false;
    std::optional<std::string> language;

    bool operator==(const CaptionTrack&) const = default;

    static CaptionTrack fromJson(const JsonReader& r) {
        return {r.get<std::vector<CaptionWord>>("words"), r.get<CaptionStyle>("style"), r.get<bool>("hidden"),
                r.getOptional<std::string>("language")};
    }
    nlohmann::json toJson() const {
        nlohmann::json j{{"words", encodeJson(words)}, {"style", style.toJson()}, {"hidden", hidden}};
        putOptional(j, "language", language);
        return j;
    }
};

} // namespace recorder
