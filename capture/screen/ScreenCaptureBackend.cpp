#include "screen/ScreenCaptureBackend.h"

#include "x11/X11CaptureBackend.h"

namespace recorder {

std::shared_ptr<ScreenCaptureBackend> ScreenCaptureBackend::forThisSession() {
    // An X server (Xorg, or Xwayland's view of X11 windows) is all there is
    // until the portal backend lands.
    return std::make_shared<X11CaptureBackend>();
}

} // namespace recorder
