#pragma once

#include "model/Size.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace recorder {

// A picture from a camera: BGRA, stamped with the host-clock nanoseconds at
// which it was captured.
struct CameraFrame {
    std::shared_ptr<AVFrame> picture;
    std::int64_t hostTime = 0;
};

// One camera as the capturer sees it. Used from one thread at a time.
class CameraDevice {
public:
    virtual ~CameraDevice() = default;
    // False when the device can't be opened or streams nothing usable.
    virtual bool open() = 0;
    virtual Size pixelSize() const = 0;
    // Waits for the next picture, at most about a frame interval; none when
    // no picture came in that time or the device has gone.
    virtual std::optional<CameraFrame> next() = 0;
    virtual void close() = 0;
};

// Makes and opens the device of an id; null when it can't.
class CameraDeviceOpener {
public:
    virtual ~CameraDeviceOpener() = default;
    virtual std::unique_ptr<CameraDevice> open(const std::string& deviceID) = 0;
};

} // namespace recorder
