#pragma once

#include "model/CameraSettings.h"
#include "model/Point.h"
#include "model/Rect.h"
#include "model/ZoomSegment.h"
#include "motion/ZoomMotionBlur.h"
#include "motion/ZoomTransform.h"

#include <optional>

namespace recorder {

// Pure canvas arithmetic: where the screen and the camera stand, and how a
// zoom maps the canvas. Canvas rectangles are in pixels, origin top left.
namespace Layout {

// `current` decides the scale (by its width only); `target` the anchor, so
// the anchor holds still while a ramp runs. The result always covers the
// canvas when current.width ≤ 1.
ZoomTransform zoomTransform(const Rect& current, const Rect& target, const Rect& screenFrame, double canvasWidth,
                            double canvasHeight);
// The fixed point of the map; the canvas centre when there is no scale.
Point zoomFocus(double scale, double tx, double ty, double canvasWidth, double canvasHeight);
// This frame's map against the next frame's; all zero unless motionBlur > 0.
ZoomMotionBlur zoomMotionBlur(const ZoomSegment& zoom, double at, const Rect& screenFrame, double motionBlur,
                              int frameRate, double canvasWidth, double canvasHeight);

// The margin of every camera layout: 3 % of the canvas's shorter side.
double cameraMargin(double canvasWidth, double canvasHeight);
// None for `hidden`; bubbles are square whatever the camera's aspect.
std::optional<Rect> cameraRect(CameraLayout layout, double canvasWidth, double canvasHeight, double bubbleSize,
                               double cameraAspect, double margin);
Rect screenFrame(CameraLayout layout, double canvasWidth, double canvasHeight, double screenAspect, double padding);

} // namespace Layout
} // namespace recorder
