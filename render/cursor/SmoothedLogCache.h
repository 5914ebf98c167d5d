#pragma once

#include "events/EventLog.h"

#include <cstddef>
#include <optional>

namespace recorder {

// The event log as the cursor is drawn from it, filtered by the project's
// `smoothing`. The filter runs over every sample (432,000 in an hour at
// 120 Hz), and its result is the same for every frame, so it runs once per
// log and smoothing value and is kept.
//
// A log is an immutable value once recorded and its owner keeps it alive
// while frames are drawn from it, so it is known by its address, the
// address and count of its samples and its first and last sample: cheap to
// compare, and a different log in the same place would have to match all
// of them. A new smoothing value refilters.
class SmoothedLogCache {
public:
    // The filtered log; the log itself when smoothing leaves it as it is.
    const EventLog& smoothed(const EventLog& log, double smoothing);

    // How many times the filter has run: for tests of the cache itself.
    int filterRuns() const { return filterRuns_; }

private:
    struct Identity {
        const EventLog* log = nullptr;
        const CursorSample* samples = nullptr;
        std::size_t count = 0;
        CursorSample first;
        CursorSample last;
        double smoothing = 0;

        bool operator==(const Identity&) const = default;
    };

    static Identity identify(const EventLog& log, double smoothing);

    std::optional<Identity> identity_;
    EventLog smoothed_;
    int filterRuns_ = 0;
};

} // namespace recorder
