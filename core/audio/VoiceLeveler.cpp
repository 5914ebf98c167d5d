#include "audio/VoiceLeveler.h"

#include <algorithm>
#include <cmath>

namespace recorder {

VoiceLeveler::VoiceLeveler(double sampleRate) : window(std::max(int(sampleRate * 0.02), 64)) {}

std::vector<float> VoiceLeveler::process(std::span<const float> samples) {
    pending.insert(pending.end(), samples.begin(), samples.end());
    std::size_t windows = pending.size() / std::size_t(window);
    std::vector<float> out(windows * std::size_t(window));
    for (std::size_t w = 0; w < windows; ++w)
        levelWindow(pending.data() + w * window, window, out.data() + w * window);
    pending.erase(pending.begin(), pending.begin() + std::ptrdiff_t(out.size()));
    return out;
}

std::vector<float> VoiceLeveler::flush() {
    std::vector<float> out(pending.size());
    if (!pending.empty()) levelWindow(pending.data(), int(pending.size()), out.data());
    pending.clear();
    return out;
}

void VoiceLeveler::levelWindow(const float* in, int n, float* out) {
    float sum = 0;
    for (int i = 0; i < n; ++i) sum += in[i] * in[i];
    float rms = std::sqrt(sum / float(n));

    float g0 = gain;
    float wanted = g0;
    // In a pause the gain holds and the loudness isn't touched.
    if (rms > gateOpen) {
        if (loudness != 0) rms = loudness + (rms - loudness) * (loudness < rms ? 0.035f : 0.013f);
        loudness = rms;
        wanted = std::min(std::max(target / std::max(loudness, 0.00001f), minGain), maxGain);
    }
    // Falls fast so a shout is caught; rises slowly so quiet passages don't pump.
    float g1 = g0 + (wanted - g0) * (wanted < g0 ? 0.25f : 0.06f);
    gain = g1;

    for (int i = 0; i < n; ++i) out[i] = softCeiling((g0 + (g1 - g0) * float(i) / float(n)) * in[i]);
}

float VoiceLeveler::softCeiling(float y) const {
    float knee = ceiling * 0.7f;
    float magnitude = std::fabs(y);
    if (magnitude <= knee) return y;
    float room = ceiling - knee;
    float shaped = knee + room * (1 - 1 / ((magnitude - knee) / room + 1));
    return std::copysign(shaped, y);
}

} // namespace recorder
