#pragma once

#include "model/BackgroundStyle.h"

#include <string>
#include <vector>

namespace recorder {

// The built-in choices of the style inspector, in the order they are shown.
namespace StylePresets {

struct BG {
    std::string name;
    BackgroundStyle style;
    // What the button paints: both ends of a gradient, or the one colour.
    std::vector<RGBAColor> swatch;
};

struct Swatch {
    std::string name;
    RGBAColor color;
};

const std::vector<BG>& backgrounds();
// Choices for the cursor's click colour.
const std::vector<Swatch>& swatches();

} // namespace StylePresets
} // namespace recorder
