#pragma once

#include <stdexcept>
#include <string>

extern "C" {
#include <libavutil/error.h>
}

namespace recorder {

inline std::string ffmpegMessage(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

// FFmpeg's negative return codes as exceptions, naming the step that failed.
inline int checked(int code, const char* step) {
    if (code < 0) throw std::runtime_error(std::string(step) + ": " + ffmpegMessage(code));
    return code;
}

} // namespace recorder
