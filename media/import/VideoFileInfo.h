#pragma once

#include "model/Size.h"

#include <filesystem>
#include <optional>

namespace recorder {

// What an import needs to know of a movie file before it makes a project.
struct VideoFileInfo {
    bool hasVideo = false;
    bool hasSound = false;
    double duration = 0;        // seconds of the picture, else of the file
    Size pixelSize;
    double frameRate = 0;       // 0 when the file doesn't say
    double soundStartOffset = 0; // seconds from the first picture to the first sound

    // None when FFmpeg can't open the file at all.
    static std::optional<VideoFileInfo> read(const std::filesystem::path& file);
};

} // namespace recorder
