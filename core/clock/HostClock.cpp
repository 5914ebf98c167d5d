#include "clock/HostClock.h"

#include <time.h>

namespace recorder::HostClock {

std::int64_t nanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t(now.tv_sec) * nanosecondsPerSecond + now.tv_nsec;
}

double seconds() { return toSeconds(nanoseconds()); }

} // namespace recorder::HostClock
