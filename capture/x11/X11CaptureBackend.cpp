#include "x11/X11CaptureBackend.h"

#include "x11/X11Connection.h"
#include "x11/X11ScreenStream.h"
#include "x11/X11ShareableContent.h"

namespace recorder {

X11CaptureBackend::X11CaptureBackend(std::string display) : display_(std::move(display)) {}

ShareableContent X11CaptureBackend::shareableContent() {
    X11Connection x(display_);
    return X11ShareableContent::load(x);
}

std::optional<ShareableContent::Window> X11CaptureBackend::window(std::uint32_t id) {
    X11Connection x(display_);
    return X11ShareableContent::describe(x, id, true);
}

std::unique_ptr<ScreenStream> X11CaptureBackend::makeStream(const StreamFilter& filter,
                                                            const StreamConfiguration& configuration, SerialQueue& queue) {
    return std::make_unique<X11ScreenStream>(display_, filter, configuration, queue);
}

} // namespace recorder
