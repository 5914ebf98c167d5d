#pragma once

#include "model/Rect.h"
#include "screen/ScreenCaptureResult.h"
#include "sink/CaptureError.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace recorder {

// A capturer of a screen, as the recording session sees it: a display, a
// window or an area of this desktop, or a phone's screen, all alike.
class ScreenRecording {
public:
    using StreamStoppedHandler = std::function<void(const CaptureError& error)>;

    virtual ~ScreenRecording() = default;

    // Called on a capture thread when capture ends by itself; the receiver
    // hops to its own thread.
    virtual void setOnStreamStopped(StreamStoppedHandler handler) = 0;
    virtual std::optional<double> firstSampleHostSeconds() const = 0;
    virtual Rect captureRect() const = 0;
    virtual Rect displayFrame() const = 0;
    virtual int droppedFrames() const = 0;

    // Waits; throws CaptureError.
    virtual void start() = 0;
    // Host-clock nanoseconds; return at once.
    virtual void pause(std::int64_t at) = 0;
    virtual void resume(std::int64_t at) = 0;
    // Wait.
    virtual std::optional<ScreenCaptureResult> stop() = 0;
    virtual void cancel() = 0;
};

} // namespace recorder
