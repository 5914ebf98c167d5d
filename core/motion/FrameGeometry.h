#pragma once

#include "model/Project.h"
#include "motion/CameraMotionState.h"
#include "motion/FrameZoom.h"
#include "timeline/ClipTime.h"

#include <optional>

namespace recorder {

// Why a frame looks the way it does: which clip plays, the zoom, and where
// the camera and the screen stand, for a canvas of the given size.
struct FrameGeometry {
    double time = 0;
    double canvasWidth = 0;
    double canvasHeight = 0;
    std::optional<ClipTime> source;
    // None without an active zoom or while it shows the full frame.
    std::optional<FrameZoom> zoom;
    CameraMotionState camera;

    // Aspects come from the assets' pixel sizes (the screen's, else the
    // canvas's; the camera's, else 16/9), as the decoded pictures would give.
    static FrameGeometry at(const Project& project, double time, double canvasWidth, double canvasHeight);

    static double screenAspect(const Project& project);
    static double cameraAspect(const Project& project);
};

} // namespace recorder
