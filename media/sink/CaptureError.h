#pragma once

#include <stdexcept>
#include <string>

namespace recorder {

// The errors of capture; what() is the sentence the person reads.
class CaptureError : public std::runtime_error {
public:
    enum class Kind { writerFailed, noPermission, deviceUnavailable, streamFailed, noContent };

    static CaptureError writerFailed(const std::string& detail);
    static CaptureError noPermission(const std::string& name);
    static CaptureError deviceUnavailable(const std::string& name);
    static CaptureError streamFailed(const std::string& reason);
    static CaptureError noContent();

    Kind kind() const { return kind_; }
    // The detail, name or reason the sentence was made from.
    const std::string& detail() const { return detail_; }

private:
    CaptureError(Kind kind, std::string detail, const std::string& sentence);

    Kind kind_;
    std::string detail_;
};

} // namespace recorder
