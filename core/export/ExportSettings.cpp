#include "export/ExportSettings.h"

#include <cmath>

namespace recorder {

std::int64_t ExportSettings::frameCount() const {
    // A hair of tolerance so that 10.2·30 counts 306 frames, not 305.
    return static_cast<std::int64_t>(std::floor(decision.durationSeconds * framesPerSecond() + 1e-9));
}

std::int64_t ExportSettings::averageBitRate() const {
    double b = fps >= 60 ? 14 : 9;
    double c = format == ExportFormat::mp4HEVC ? 0.7 : 1;
    return static_cast<std::int64_t>(double(width) * height / 2073600.0 * b * c * 1000000.0);
}

} // namespace recorder
