#pragma once

#include <cstdint>

namespace recorder {

// The one clock that capture runs on: monotonic, shared by every process on
// the machine, so a test program and the recorder can compare instants.
// Sample timestamps are nanoseconds of it; seconds are for arithmetic.
namespace HostClock {

std::int64_t nanoseconds();
double seconds();

inline constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

inline double toSeconds(std::int64_t nanoseconds) { return double(nanoseconds) / double(nanosecondsPerSecond); }
inline std::int64_t fromSeconds(double seconds) { return std::int64_t(seconds * double(nanosecondsPerSecond)); }

} // namespace HostClock
} // namespace recorder
