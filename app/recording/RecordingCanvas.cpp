#include "recording/RecordingCanvas.h"

#include <cmath>

namespace recorder::RecordingCanvas {

CanvasSettings forPixelSize(Size pixelSize, int fps) {
    double aspect = pixelSize.height != 0 ? pixelSize.width / pixelSize.height : 1.0;
    if (aspect < 1) return {1080, 1920, fps};
    if (std::fabs(aspect - 1.7777777777777777) > 0.15) return {1920, int(std::lround(1920 / aspect)) & ~1, fps};
    return {1920, 1080, fps};
}

} // namespace recorder::RecordingCanvas
