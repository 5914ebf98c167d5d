#pragma once

#include <span>
#include <vector>

struct SwrContext;

namespace recorder {

// Changes the sample rate of one channel of float samples with
// libswresample. Output time zero is input time zero: nothing to line up.
class Resampler {
public:
    // Throws std::runtime_error when libswresample refuses the rates.
    Resampler(int fromRate, int toRate);
    ~Resampler();
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    // Appends what is ready; the filter keeps a little back.
    void process(std::span<const float> samples, std::vector<float>& out);
    // Appends what was kept back.
    void flush(std::vector<float>& out);

private:
    void convert(const float* samples, int count, std::vector<float>& out);

    SwrContext* context_ = nullptr;
};

} // namespace recorder
