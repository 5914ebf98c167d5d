#pragma once

#include <span>
#include <vector>

namespace recorder {

// Automatic gain for one channel of speech, in 20 ms steps: quiet voices come
// up slowly, shouts come down fast, pauses hold the gain, and a soft ceiling
// keeps peaks under `ceiling`. One instance belongs to one channel of one run.
struct VoiceLeveler {
    float target = 0.1f;    // wanted RMS loudness
    float maxGain = 6.0f;
    float minGain = 0.35f;
    float ceiling = 0.89f;  // highest absolute sample value out
    int window = 64;        // samples per step
    float gateOpen = 0.006f; // RMS below this doesn't count as voice
    float gain = 1.0f;
    float loudness = 0;     // smoothed RMS; 0 until the first voice
    std::vector<float> pending;

    explicit VoiceLeveler(double sampleRate);

    // Output for every full window now available; the rest waits in `pending`.
    std::vector<float> process(std::span<const float> samples);
    // Output for what is left, as one short window.
    std::vector<float> flush();

private:
    void levelWindow(const float* in, int n, float* out);
    float softCeiling(float y) const;
};

} // namespace recorder
