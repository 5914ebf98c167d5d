#pragma once

#include <cstdint>

namespace recorder {

// Composes the output frames of an export. The pipeline here knows pixels
// and encoders only; whoever draws the project lives a layer above.
class ExportFrameDrawer {
public:
    virtual ~ExportFrameDrawer() = default;

    // Opens the sources. Called once, after the export knows it has frames.
    virtual void open() = 0;
    // Draws output frame `index`, at project time `time`, as opaque BGRA
    // rows `stride` bytes apart, into the export's width by height.
    virtual void draw(std::int64_t index, double time, std::uint8_t* bgra, int stride) = 0;
};

} // namespace recorder
