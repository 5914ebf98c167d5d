#pragma once

#include <cstddef>

namespace recorder {

// A second-order Butterworth high-pass (12 dB an octave) that takes out rumble
// and handling noise below the voice. One channel; no delay, only the phase
// shift of any such filter near its corner.
class HighPassFilter {
public:
    HighPassFilter(double sampleRate, double cutoff);
    void process(float* samples, std::size_t count);

private:
    double b0_, b1_, b2_, a1_, a2_;
    double x1_ = 0, x2_ = 0, y1_ = 0, y2_ = 0;
};

} // namespace recorder
