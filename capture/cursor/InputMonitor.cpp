#include "cursor/InputMonitor.h"

#include "x11/X11InputMonitor.h"

namespace recorder {

std::unique_ptr<InputMonitor> InputMonitor::forThisSession() { return std::make_unique<X11InputMonitor>(); }

} // namespace recorder
