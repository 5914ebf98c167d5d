#pragma once

#include "frames/FrameImage.h"

// The two tests for a black picture, each on the same sparse grid: 64 points
// at (width·i/16, height·j/16) for odd i and j. One point that is not black
// ends the test. Recordings often start with a black frame or two while the
// capture warms up; these find them without reading every pixel.
namespace recorder::BlackFrame {

// A still taken from a file: a point is black when at least 3 of its 4
// bytes are zero, so an alpha-only picture is judged the same way.
bool imageIsBlack(const FrameImage& image);

// A frame straight from the decoder: black when blue, green and red are zero.
bool bufferIsBlack(const FrameImage& image);

} // namespace recorder::BlackFrame
