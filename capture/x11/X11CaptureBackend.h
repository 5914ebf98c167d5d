#pragma once

#include "screen/ScreenCaptureBackend.h"

#include <string>

namespace recorder {

// Screen capture on an X server: RandR monitors for displays, EWMH for
// windows, MIT-SHM grabs with Damage for changes, Composite for one window.
class X11CaptureBackend : public ScreenCaptureBackend {
public:
    // $DISPLAY when no name is given.
    explicit X11CaptureBackend(std::string display = {});

    ShareableContent shareableContent() override;
    std::optional<ShareableContent::Window> window(std::uint32_t id) override;
    // X11 draws in pixels.
    double scaleFactor(std::uint32_t) override { return 1.0; }
    std::unique_ptr<ScreenStream> makeStream(const StreamFilter& filter, const StreamConfiguration& configuration,
                                             SerialQueue& queue) override;

private:
    std::string display_;
};

} // namespace recorder
