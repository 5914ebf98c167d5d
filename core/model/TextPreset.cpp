#include "model/TextPreset.h"

namespace recorder {

namespace {

constexpr RGBAColor white{1, 1, 1, 1};
constexpr RGBAColor black{0, 0, 0, 1};

TextStyle style(bool bold, double cornerRadius, double padding) {
    TextStyle s;
    s.bold = bold;
    s.italic = false;
    s.strokeColor = black;
    s.boxOpacity = 1;
    s.cornerRadius = cornerRadius;
    s.padding = padding;
    return s;
}

TextStyle boxed(TextStyle s, RGBAColor colour, double opacity = 1) {
    s.boxEnabled = true;
    s.boxColor = colour;
    s.boxOpacity = opacity;
    return s;
}

TextStyle beast() {
    TextStyle s = style(false, 0.25, 0.45);
    s.fontName = "Impact";
    s.uppercase = true;
    s.strokeWidth = 0.09;
    s.shadow = true;
    return s;
}

std::vector<TextPreset> makePresets() {
    return {
        {"plain", "Plain", style(true, 0.25, 0.45), white},
        {"label", "Label", boxed(style(true, 0.22, 0.45), white), black},
        {"pill", "Pill", boxed(style(true, 0.5, 0.55), black, 0.85), white},
        {"beast", "Beast", beast(), white},
        {"boxed", "Boxed", boxed(style(true, 0, 0.45), black), white},
        {"marker", "Marker", boxed(style(true, 0.12, 0.35), {1, 0.86, 0.1, 1}), black},
    };
}

} // namespace

const std::vector<TextPreset>& TextPreset::all() {
    static const std::vector<TextPreset> presets = makePresets();
    return presets;
}

const TextPreset* TextPreset::find(const std::string& id) {
    for (const auto& preset : all())
        if (preset.id == id) return &preset;
    return nullptr;
}

} // namespace recorder
