#pragma once

#include "model/CanvasSettings.h"
#include "model/Size.h"

// The canvas a new recording gets from the shape of its picture.
namespace recorder::RecordingCanvas {

// Portrait is 1080 × 1920 whatever its exact aspect; within 0.15 of 16:9
// stays 1920 × 1080; any other shape keeps its aspect at 1920 wide, with an
// even height. A picture with no height counts as square.
CanvasSettings forPixelSize(Size pixelSize, int fps);

} // namespace recorder::RecordingCanvas
