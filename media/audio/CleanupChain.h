#pragma once

#include "audio/HighPassFilter.h"
#include "audio/NoiseSuppressor.h"
#include "audio/Resampler.h"
#include "audio/VoiceLeveler.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace recorder {

// One channel of the microphone cleaner: noise removal (at a rate the
// suppressor takes, resampling around it when the file has another), the
// 70 Hz high-pass, then levelling. Whatever goes in comes out as many samples
// long and lined up sample for sample: the suppressor's delay is cut from
// the front and made up with silence fed in at the end.
class CleanupChain {
public:
    static constexpr double highPassCutoff = 70;

    // Throws std::runtime_error when noise removal can't be set up.
    CleanupChain(int sampleRate, bool noiseRemoval, bool leveling);

    std::vector<float> push(std::span<const float> samples);
    // Everything still held back; afterwards the output is as long as the input.
    std::vector<float> finish();

private:
    std::vector<float> denoise(std::span<const float> samples, bool last);
    std::vector<float> filterAndLevel(std::vector<float> samples, bool last);

    std::unique_ptr<Resampler> up_;
    std::unique_ptr<NoiseSuppressor> suppressor_;
    std::unique_ptr<Resampler> down_;
    HighPassFilter highPass_;
    std::optional<VoiceLeveler> leveler_;
    int delayLeft_ = 0;
    std::int64_t received_ = 0;
    std::int64_t passed_ = 0; // samples that left the noise stage
};

} // namespace recorder
