#pragma once

#include "model/RGBAColor.h"

#include <optional>
#include <string>

namespace recorder {

// The look of a text overlay; sizes are fractions of the font size.
struct TextStyle {
    std::optional<std::string> fontName;
    bool bold = true;
    bool italic = false;
    bool uppercase = false;
    double strokeWidth = 0;
    RGBAColor strokeColor{0, 0, 0, 1};
    bool shadow = false;
    bool boxEnabled = false;
    RGBAColor boxColor{0, 0, 0, 1};
    double boxOpacity = 1;
    double cornerRadius = 0.25;
    double padding = 0.45;

    bool operator==(const TextStyle&) const = default;

    static TextStyle fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
