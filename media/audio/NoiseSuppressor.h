#pragma once

#include <memory>
#include <span>
#include <vector>

namespace webrtc {
class AudioProcessing;
}

namespace recorder {

// webrtc-audio-processing's noise suppression on one channel, in 10 ms
// frames. Its output lags its input by `latency()` samples; the caller lines
// the two up.
class NoiseSuppressor {
public:
    static bool supports(int sampleRate);

    // Throws std::runtime_error when the library refuses the set-up.
    explicit NoiseSuppressor(int sampleRate);
    ~NoiseSuppressor();
    NoiseSuppressor(const NoiseSuppressor&) = delete;
    NoiseSuppressor& operator=(const NoiseSuppressor&) = delete;

    int latency() const;
    int frameLength() const { return frameLength_; }

    // Appends the output of every full frame now available; the rest waits.
    void process(std::span<const float> samples, std::vector<float>& out);

private:
    std::unique_ptr<webrtc::AudioProcessing> processing_;
    int sampleRate_;
    int frameLength_;
    std::vector<float> pending_;
};

} // namespace recorder
