#pragma once

#include <filesystem>
#include <optional>

namespace recorder {

// What a camera or microphone left when it stopped writing.
struct CapturedTrack {
    std::filesystem::path url;
    double duration = 0;
    std::optional<double> firstSampleHostSeconds;

    bool operator==(const CapturedTrack&) const = default;
};

} // namespace recorder
