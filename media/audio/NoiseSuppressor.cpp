#include "audio/NoiseSuppressor.h"

#include <webrtc/modules/audio_processing/include/audio_processing.h>

#include <stdexcept>
#include <string>

namespace recorder {

namespace {

// The delay through the suppressor, measured by cross-correlating speech-like
// test signals with the output of webrtc-audio-processing 0.3: its analysis
// window plus, above 16 kHz, the band-splitting filters.
int measuredLatency(int sampleRate) {
    switch (sampleRate) {
    case 8000: return 48;
    case 16000: return 96;
    case 32000: return 196;
    default: return 337;
    }
}

void check(int status, const char* step) {
    if (status != webrtc::AudioProcessing::kNoError)
        throw std::runtime_error(std::string("noise suppression ") + step + " failed with " + std::to_string(status));
}

} // namespace

bool NoiseSuppressor::supports(int sampleRate) {
    return sampleRate == 8000 || sampleRate == 16000 || sampleRate == 32000 || sampleRate == 48000;
}

NoiseSuppressor::NoiseSuppressor(int sampleRate) : sampleRate_(sampleRate), frameLength_(sampleRate / 100) {
    if (!supports(sampleRate)) throw std::runtime_error("noise suppression can't run at " + std::to_string(sampleRate) + " Hz");
    processing_.reset(webrtc::AudioProcessing::Create());
    if (!processing_) throw std::runtime_error("noise suppression could not start");
    check(processing_->noise_suppression()->set_level(webrtc::NoiseSuppression::kHigh), "set-up");
    check(processing_->noise_suppression()->Enable(true), "set-up");
}

NoiseSuppressor::~NoiseSuppressor() = default;

int NoiseSuppressor::latency() const { return measuredLatency(sampleRate_); }

void NoiseSuppressor::process(std::span<const float> samples, std::vector<float>& out) {
    pending_.insert(pending_.end(), samples.begin(), samples.end());
    webrtc::StreamConfig config(sampleRate_, 1);
    std::size_t done = 0;
    for (; pending_.size() - done >= std::size_t(frameLength_); done += std::size_t(frameLength_)) {
        std::size_t end = out.size();
        out.resize(end + std::size_t(frameLength_));
        const float* source[1] = {pending_.data() + done};
        float* destination[1] = {out.data() + end};
        check(processing_->ProcessStream(source, config, config, destination), "processing");
    }
    pending_.erase(pending_.begin(), pending_.begin() + std::ptrdiff_t(done));
}

} // namespace recorder
