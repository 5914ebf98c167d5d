#include "model/CaptionStyle.h"

namespace recorder {

CaptionStyle CaptionStyle::fromJson(const JsonReader& r) {
    CaptionStyle s;
    s.preset = r.get<std::string>("preset");
    s.fontName = r.getOptional<std::string>("fontName");
    s.size = r.get<double>("size");
    s.uppercase = r.get<bool>("uppercase");
    s.textColor = r.get<RGBAColor>("textColor");
    s.strokeWidth = r.get<double>("strokeWidth");
    s.strokeColor = r.get<RGBAColor>("strokeColor");
    s.boxColor = r.getOptional<RGBAColor>("boxColor");
    s.shadow = r.get<bool>("shadow");
    s.highlightCurrentWord = r.get<bool>("highlightCurrentWord");
    s.highlightColor = r.get<RGBAColor>("highlightColor");
    s.highlightAsBox = r.get<bool>("highlightAsBox");
    s.positionY = r.get<double>("positionY");
    s.maxWordsPerLine = r.get<int>("maxWordsPerLine");
    s.showEmoji = r.get<bool>("showEmoji");
    s.emojiSize = r.get<double>("emojiSize");
    return s;
}

nlohmann::json CaptionStyle::toJson() const {
    nlohmann::json j{{"preset", preset},
                     {"size", size},
                     {"uppercase", uppercase},
                     {"textColor", textColor.toJson()},
                     {"strokeWidth", strokeWidth},
                     {"strokeColor", strokeColor.toJson()},
                     {"shadow", shadow},
                     {"highlightCurrentWord", highlightCurrentWord},
                     {"highlightColor", highlightColor.toJson()},
                     {"highlightAsBox", highlightAsBox},
                     {"positionY", positionY},
                     {"maxWordsPerLine", maxWordsPerLine},
                     {"showEmoji", showEmoji},
                     {"emojiSize", emojiSize}};
    putOptional(j, "fontName", fontName);
    putOptional(j, "boxColor", boxColor);
    return j;
}

} // namespace recorder
