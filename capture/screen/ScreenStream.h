#pragma once

#include "sink/CaptureError.h"
#include "sink/MediaSample.h"

#include <functional>

namespace recorder {

// A running capture of a display, an area or a window, delivering only
// pictures that changed, stamped with the host clock. The desktop's own
// capture technology sits behind it (X11 now; a portal stream later).
class ScreenStream {
public:
    using FrameHandler = std::function<void(const MediaSample& frame)>;
    using StopHandler = std::function<void(const CaptureError& error)>;

    virtual ~ScreenStream() = default;
    // Waits until capture runs; throws CaptureError. Pictures, and a stop by
    // itself (a window closed, a monitor unplugged), arrive on the stream's
    // queue.
    virtual void start(FrameHandler onFrame, StopHandler onStop) = 0;
    // Waits until no more pictures can arrive. Stopping twice is harmless.
    virtual void stop() = 0;
};

} // namespace recorder
