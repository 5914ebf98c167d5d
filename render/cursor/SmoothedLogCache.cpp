#include "cursor/SmoothedLogCache.h"

namespace recorder {

SmoothedLogCache::Identity SmoothedLogCache::identify(const EventLog& log, double smoothing) {
    Identity identity{&log, log.samples.data(), log.samples.size(), {}, {}, smoothing};
    if (!log.samples.empty()) {
        identity.first = log.samples.front();
        identity.last = log.samples.back();
    }
    return identity;
}

const EventLog& SmoothedLogCache::smoothed(const EventLog& log, double smoothing) {
    // The filter's own rule for leaving a log as it is: no copy needed.
    if (!(smoothing > 0) || log.samples.size() < 3) return log;
    Identity identity = identify(log, smoothing);
    if (identity_ && *identity_ == identity) return smoothed_;
    smoothed_ = log.smoothed(smoothing);
    identity_ = identity;
    ++filterRuns_;
    return smoothed_;
}

} // namespace recorder
