#pragma once

#include <cmath>

namespace recorder {

// Orders times with NaN after every number. A damaged value then sorts to
// the end instead of breaking the sort's ordering contract (which is
// undefined behaviour and can crash).
inline bool earlierTime(double a, double b) {
    if (std::isnan(a)) return false;
    if (std::isnan(b)) return true;
    return a < b;
}

// std::clamp, except that NaN reads as `low` rather than passing through.
inline double clampOrLow(double value, double low, double high) {
    if (std::isnan(value)) return low;
    return value < low ? low : (high < value ? high : value);
}

} // namespace recorder
