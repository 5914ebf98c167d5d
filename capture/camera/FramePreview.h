#pragma once

#include "sink/MediaSample.h"

namespace recorder {

// A live picture of a camera (the recorder panel's preview, a floating
// bubble). Frames are shown as soon as they arrive, whatever their time.
class FramePreview {
public:
    virtual ~FramePreview() = default;
    // Called on the camera's queue; must not block it.
    virtual void show(const MediaSample& frame) = 0;
    // A preview whose decoder gave up is flushed before the next frame.
    virtual bool needsFlush() const { return false; }
    virtual void flush() {}
};

} // namespace recorder
