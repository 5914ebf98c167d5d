#pragma once

#include "capture/ShareableContent.h"
#include "queue/SerialQueue.h"
#include "screen/ScreenStream.h"
#include "screen/StreamConfiguration.h"
#include "screen/StreamFilter.h"

#include <memory>
#include <optional>

namespace recorder {

// The desktop's capture technology: what can be recorded, and streams of it.
class ScreenCaptureBackend {
public:
    virtual ~ScreenCaptureBackend() = default;

    // Throws CaptureError::noContent when there is no desktop to capture.
    virtual ShareableContent shareableContent() = 0;
    // Any window on screen now, whether or not the list offers it.
    virtual std::optional<ShareableContent::Window> window(std::uint32_t id) = 0;
    // Pixels per point of a display.
    virtual double scaleFactor(std::uint32_t displayID) = 0;
    virtual std::unique_ptr<ScreenStream> makeStream(const StreamFilter& filter, const StreamConfiguration& configuration,
                                                     SerialQueue& queue) = 0;

    // The backend of the desktop session this process runs in.
    static std::shared_ptr<ScreenCaptureBackend> forThisSession();
};

} // namespace recorder
