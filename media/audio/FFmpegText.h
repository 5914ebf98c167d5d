#pragma once

#include <string>

namespace recorder {

// FFmpeg's sentence for an error code.
std::string ffmpegErrorText(int code);

} // namespace recorder
