#pragma once

namespace recorder {

// Containers of a recording's files: ".mov" for pictures, ".m4a" for sound.
enum class FileType { quickTimeMovie, m4a };

enum class VideoCodec { h264, hevc };

} // namespace recorder
