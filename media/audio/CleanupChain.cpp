#include "audio/CleanupChain.h"

#include <algorithm>

namespace recorder {

namespace {

// Where the file's rate isn't one the suppressor takes, it works at this one.
constexpr int suppressorFallbackRate = 48000;

void append(std::vector<float>& to, const std::vector<float>& more) { to.insert(to.end(), more.begin(), more.end()); }

} // namespace

CleanupChain::CleanupChain(int sampleRate, bool noiseRemoval, bool leveling)
    : highPass_(sampleRate, highPassCutoff) {
    if (noiseRemoval) {
        int rate = NoiseSuppressor::supports(sampleRate) ? sampleRate : suppressorFallbackRate;
        if (rate != sampleRate) {
            up_ = std::make_unique<Resampler>(sampleRate, rate);
            down_ = std::make_unique<Resampler>(rate, sampleRate);
        }
        suppressor_ = std::make_unique<NoiseSuppressor>(rate);
        delayLeft_ = suppressor_->latency();
    }
    if (leveling) leveler_.emplace(sampleRate);
}

std::vector<float> CleanupChain::push(std::span<const float> samples) {
    received_ += std::int64_t(samples.size());
    return filterAndLevel(denoise(samples, false), false);
}

std::vector<float> CleanupChain::finish() {
    std::vector<float> rest = denoise({}, true);
    // The suppressor's and resamplers' tails overshoot; the end is where the input ended.
    rest.resize(std::size_t(std::max<std::int64_t>(received_ - (passed_ - std::int64_t(rest.size())), 0)));
    return filterAndLevel(std::move(rest), true);
}

std::vector<float> CleanupChain::denoise(std::span<const float> samples, bool last) {
    if (!suppressor_) {
        passed_ += std::int64_t(samples.size());
        return {samples.begin(), samples.end()};
    }
    std::vector<float> atRate;
    if (up_) {
        up_->process(samples, atRate);
        if (last) up_->flush(atRate);
    } else {
        atRate.assign(samples.begin(), samples.end());
    }
    // Silence pushes the delayed end and the last part frame out.
    if (last) atRate.resize(atRate.size() + std::size_t(suppressor_->latency() + suppressor_->frameLength()), 0.0f);

    std::vector<float> clean;
    suppressor_->process(atRate, clean);
    auto cut = std::min<std::size_t>(std::size_t(delayLeft_), clean.size());
    clean.erase(clean.begin(), clean.begin() + std::ptrdiff_t(cut));
    delayLeft_ -= int(cut);

    std::vector<float> out;
    if (down_) {
        down_->process(clean, out);
        if (last) down_->flush(out);
    } else {
        out = std::move(clean);
    }
    passed_ += std::int64_t(out.size());
    return out;
}

std::vector<float> CleanupChain::filterAndLevel(std::vector<float> samples, bool last) {
    highPass_.process(samples.data(), samples.size());
    if (!leveler_) return samples;
    std::vector<float> out = leveler_->process(samples);
    if (last) append(out, leveler_->flush());
    return out;
}

} // namespace recorder
