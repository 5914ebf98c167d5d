#pragma once

#include "model/Rect.h"
#include "model/Size.h"

#include <filesystem>
#include <optional>

namespace recorder {

// What a finished screen recording left: its files and its geometry.
struct ScreenCaptureResult {
    std::filesystem::path videoURL;
    std::optional<std::filesystem::path> systemAudioURL;
    double duration = 0;
    Size pixelSize;
    Rect captureRect;
    Rect displayFrame;
    double scaleFactor = 1;
    std::optional<double> firstSampleHostSeconds;
    int droppedFrames = 0;
    // The sound server's monitor may start a second after the picture: the
    // project places the system sound by its own first sample.
    std::optional<double> systemAudioFirstSampleHostSeconds;

    bool operator==(const ScreenCaptureResult&) const = default;
};

} // namespace recorder
