#include "look/StylePresets.h"

namespace recorder::StylePresets {

namespace {

RGBAColor hex(const char* text) {
    return *RGBAColor::fromHex(text);
}

BG gradient(const char* name, const char* from, const char* to) {
    return {name, {BackgroundStyle::Gradient{hex(from), hex(to), 135}}, {hex(from), hex(to)}};
}

BG solid(const char* name, const char* color) {
    return {name, {BackgroundStyle::Solid{hex(color)}}, {hex(color)}};
}

} // namespace

const std::vector<BG>& backgrounds() {
    static const std::vector<BG> list{
        gradient("Mint", "#D4FC79", "#96E6A1"),  gradient("Dusk", "#1B1E3A", "#5A3FD6"),
        gradient("Ember", "#2B1608", "#F2994A"), gradient("Sea", "#0F2027", "#2C7A7B"),
        gradient("Peach", "#FFD3A5", "#FD6585"), gradient("Aurora", "#0B3D2E", "#3DDC97"),
        gradient("Rose", "#3A0F1E", "#E0457B"),  solid("Graphite", "#1C1C1E"),
        solid("Paper", "#F4F1EA"),
    };
    return list;
}

const std::vector<Swatch>& swatches() {
    static const std::vector<Swatch> list{
        {"Mint", hex("#96E6A1")}, {"White", hex("#FFFFFF")}, {"Black", hex("#111111")}, {"Red", hex("#EF4444")},
        {"Amber", hex("#F59E0B")}, {"Blue", hex("#3B82F6")},  {"Pink", hex("#EC4899")},
    };
    return list;
}

} // namespace recorder::StylePresets
