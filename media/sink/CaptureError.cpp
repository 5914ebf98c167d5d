#include "sink/CaptureError.h"

namespace recorder {

CaptureError::CaptureError(Kind kind, std::string detail, const std::string& sentence)
    : std::runtime_error(sentence), kind_(kind), detail_(std::move(detail)) {}

CaptureError CaptureError::writerFailed(const std::string& detail) {
    return {Kind::writerFailed, detail, "Could not start the video writer (" + detail + ")."};
}

CaptureError CaptureError::noPermission(const std::string& name) {
    return {Kind::noPermission, name, name + " permission is missing."};
}

CaptureError CaptureError::deviceUnavailable(const std::string& name) {
    return {Kind::deviceUnavailable, name, name + " is not available."};
}

CaptureError CaptureError::streamFailed(const std::string& reason) {
    return {Kind::streamFailed, reason, "The screen capture stopped: " + reason};
}

CaptureError CaptureError::noContent() {
    return {Kind::noContent, "", "Nothing to capture: no display or window was found."};
}

} // namespace recorder
