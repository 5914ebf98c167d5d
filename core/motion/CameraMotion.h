#pragma once

#include "model/CameraSettings.h"
#include "motion/CameraMotionState.h"

namespace recorder {

// The camera bubble between layouts: every instant is evaluated from the
// settings alone, with no state carried from frame to frame.
namespace CameraMotion {

// `hidden` is true when there is no camera picture or its lane is hidden;
// the keyframes are then not looked at.
CameraMotionState state(double at, double canvasWidth, double canvasHeight, double cameraAspect, double screenAspect,
                        double padding, const CameraSettings& settings, bool hidden);

} // namespace CameraMotion
} // namespace recorder
