#pragma once

#include "sink/SampleEncoder.h"

#include <memory>

struct AVCodecContext;
struct AVAudioFifo;
struct SwrContext;

namespace recorder {

// AAC of sound that arrives in runs of any length, rate and layout. The file's
// sound is one unbroken stream: a gap between runs is filled with silence and
// an overlap is cut, so sound stays where its timestamps put it.
class AudioEncoder : public SampleEncoder {
public:
    struct Settings {
        int sampleRate = 48000;
        int channels = 2;
        std::int64_t bitRate = 192000;
    };

    explicit AudioEncoder(Settings settings);
    ~AudioEncoder() override;

    void open(const AVFormatContext& format, AVStream& stream) override;
    void encode(const MediaSample& sample, std::int64_t sessionStart, const Emit& emit) override;
    void flush(const Emit& emit) override;
    AVRational timeBase() const override { return {1, settings_.sampleRate}; }

private:
    void prepareResampler(const AVFrame& in);
    void queueSilence(int count);
    void queueConverted(const AVFrame& in, int skip);
    void sendFrames(int size, const Emit& emit);
    void receive(const Emit& emit);

    Settings settings_;
    AVCodecContext* codec_ = nullptr;
    SwrContext* resampler_ = nullptr;
    AVAudioFifo* fifo_ = nullptr;
    int inFormat_ = -1;
    int inRate_ = 0;
    int inChannels_ = 0;
    bool started_ = false;
    // In samples from the session's start: where the next encoded frame
    // begins, and where the queued sound ends.
    std::int64_t position_ = 0;
    std::int64_t queuedEnd_ = 0;
};

} // namespace recorder
