#include "audio/FFmpegText.h"

extern "C" {
#include <libavutil/error.h>
}

namespace recorder {

std::string ffmpegErrorText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

} // namespace recorder
