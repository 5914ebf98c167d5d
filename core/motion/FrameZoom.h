#pragma once

#include "model/Rect.h"
#include "model/Uuid.h"
#include "motion/ZoomMotionBlur.h"
#include "motion/ZoomTransform.h"

namespace recorder {

// The zoom in force at one frame: the segment's rectangles of the moment,
// the canvas map they give, its fixed point and the motion-blur amounts.
struct FrameZoom {
    Uuid id;
    Rect rect;
    Rect target;
    ZoomTransform transform;
    Point focus;
    ZoomMotionBlur motion;

    bool operator==(const FrameZoom&) const = default;
};

} // namespace recorder
