#pragma once

#include "model/RGBAColor.h"

#include <optional>
#include <string>

namespace recorder {

// Sizes are fractions of the canvas height (the stroke: of the text size).
struct CaptionStyle {
    std::string preset = "clean";
    std::optional<std::string> fontName;
    double size = 0.045;
    bool uppercase = false;
    RGBAColor textColor{1, 1, 1, 1};
    double strokeWidth = 0;
    RGBAColor strokeColor{0, 0, 0, 1};
    std::optional<RGBAColor> boxColor;
    bool shadow = true;
    bool highlightCurrentWord = false;
    RGBAColor highlightColor{0.588, 0.902, 0.631, 1};
    bool highlightAsBox = false;
    double positionY = 0.84;
    int maxWordsPerLine = 8;
    bool showEmoji = false;
    double emojiSize = 0.11;

    bool operator==(const CaptionStyle&) const = default;

    static CaptionStyle fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
