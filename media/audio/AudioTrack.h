#pragma once

#include "audio/VolumePoint.h"
#include "timeline/TrackSpan.h"

#include <filesystem>
#include <string>
#include <vector>

namespace recorder {

// One sound file of the mix: where its stretches play on the output
// timeline and how loud, the volume ramping linearly between the points and
// holding the first and last beyond them.
struct AudioTrack {
    std::string name;
    std::filesystem::path file;
    std::vector<TrackSpan> spans;
    std::vector<VolumePoint> volume;

    bool operator==(const AudioTrack&) const = default;
};

} // namespace recorder
