#include "audio/HighPassFilter.h"

#include <cmath>
#include <numbers>

namespace recorder {

HighPassFilter::HighPassFilter(double sampleRate, double cutoff) {
    // The biquad of the Audio EQ Cookbook; this Q makes it Butterworth.
    double q = 1 / std::numbers::sqrt2;
    double w = 2 * std::numbers::pi * cutoff / sampleRate;
    double alpha = std::sin(w) / (2 * q);
    double cosw = std::cos(w);
    double a0 = 1 + alpha;
    b0_ = (1 + cosw) / 2 / a0;
    b1_ = -(1 + cosw) / a0;
    b2_ = b0_;
    a1_ = -2 * cosw / a0;
    a2_ = (1 - alpha) / a0;
}

void HighPassFilter::process(float* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        double x = samples[i];
        double y = b0_ * x + b1_ * x1_ + b2_ * x2_ - a1_ * y1_ - a2_ * y2_;
        x2_ = x1_;
        x1_ = x;
        y2_ = y1_;
        y1_ = y;
        samples[i] = float(y);
    }
}

} // namespace recorder
