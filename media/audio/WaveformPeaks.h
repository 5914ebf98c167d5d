#pragma once

#include <filesystem>
#include <vector>

namespace recorder {

// The loudness curve the timeline draws under a track: one RMS value per
// 20 ms of the file (50 a second), all its audio streams mixed to one.
struct WaveformPeaks {
    std::vector<float> values;

    static constexpr int sampleRate = 8000;
    static constexpr int run = 160; // 20 ms at 8000 Hz

    // Never throws: an unreadable file gives no values, a damaged one what
    // was read before the damage.
    static WaveformPeaks read(const std::filesystem::path& file);

    bool operator==(const WaveformPeaks&) const = default;
};

} // namespace recorder
