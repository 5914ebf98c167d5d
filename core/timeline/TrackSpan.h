#pragma once

namespace recorder {

// One stretch of a file on the output timeline, in seconds, as playback and
// export lay it out.
struct TrackSpan {
    double fileStart = 0;
    double fileDuration = 0;
    double outputLead = 0;
    double outputDuration = 0;

    bool operator==(const TrackSpan&) const = default;
};

} // namespace recorder
