#pragma once

#include "model/RGBAColor.h"
#include "model/TextStyle.h"

#include <string>
#include <vector>

namespace recorder {

// A named look for a text item: its style and its text colour.
struct TextPreset {
    std::string id;
    std::string name;
    TextStyle style;
    RGBAColor textColor;

    bool operator==(const TextPreset&) const = default;

    // The six presets, in the order they are offered.
    static const std::vector<TextPreset>& all();
    // The preset with this id, or none.
    static const TextPreset* find(const std::string& id);
};

} // namespace recorder
