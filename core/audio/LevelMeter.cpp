#include "audio/LevelMeter.h"

#include <algorithm>
#include <cmath>

namespace recorder::LevelMeter {

double rms(const float* samples, std::size_t count) {
    if (count == 0) return 0;
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += double(samples[i]) * double(samples[i]);
    return std::sqrt(sum / double(count));
}

double rms(const short* samples, std::size_t count) {
    if (count == 0) return 0;
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        double x = double(samples[i]) / 32768.0;
        sum += x * x;
    }
    return std::sqrt(sum / double(count));
}

float reading(double rms) {
    double level = (20 * std::log10(std::max(rms, 0.000001)) + 50) / 50;
    return float(std::clamp(level, 0.0, 1.0));
}

float next(float present, float reading) {
    if (present < reading) return reading;
    return present * 0.85f + reading * 0.15f;
}

} // namespace recorder::LevelMeter
