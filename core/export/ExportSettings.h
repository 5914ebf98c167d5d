#pragma once

#include "export/ExportDecision.h"
#include "export/ExportFormat.h"

#include <cstdint>
#include <filesystem>

namespace recorder {

// How one export writes its file.
struct ExportSettings {
    ExportFormat format = ExportFormat::mp4H264;
    int width = 0;
    int height = 0;
    int fps = 30;
    std::filesystem::path outputURL;
    ExportDecision decision;
    int gifFPS = 15;

    bool operator==(const ExportSettings&) const = default;

    // The frame rate of this format: gifFPS for a GIF.
    int framesPerSecond() const { return format == ExportFormat::gif ? gifFPS : fps; }
    // floor(duration·fps): no partial last frame.
    std::int64_t frameCount() const;
    // Bits per second: (w·h/1920·1080) · b · c · 10^6 with b 14 from 60 fps
    // up, else 9, and c 0.7 for HEVC, else 1.
    std::int64_t averageBitRate() const;
    // A key frame at least every two seconds.
    int maxKeyFrameInterval() const { return 2 * fps; }
};

} // namespace recorder
