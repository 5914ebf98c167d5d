#pragma once

#include "audio/PulseContext.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

struct pa_stream;

namespace recorder {

// Records one source of the sound server as interleaved 32-bit float at
// 48 kHz. Each run of samples comes with the host-clock time of its first
// sample, counted on from the earliest arrival so runs follow without gaps.
class PulseRecordStream {
public:
    static constexpr int sampleRate = 48000;

    // Called on the server connection's thread; keep it short.
    using SampleHandler = std::function<void(const float* interleaved, int frames, int channels, std::int64_t hostTime)>;
    // The source went away or the server hung up.
    using EndHandler = std::function<void()>;

    PulseRecordStream(std::shared_ptr<PulseContext> context, std::string sourceName, int channels);
    ~PulseRecordStream();
    PulseRecordStream(const PulseRecordStream&) = delete;
    PulseRecordStream& operator=(const PulseRecordStream&) = delete;

    // False when the server refuses the stream (no such source).
    bool start(SampleHandler onSamples, EndHandler onEnd = {});
    // After it returns no handler runs again.
    void stop();

    int channels() const { return channels_; }
    const std::string& sourceName() const { return sourceName_; }

private:
    static void onRead(pa_stream* stream, std::size_t bytes, void* self);
    static void onState(pa_stream* stream, void* self);
    void read();
    std::int64_t firstSampleTime(int frames);

    std::shared_ptr<PulseContext> context_;
    std::string sourceName_;
    int channels_;
    pa_stream* stream_ = nullptr;
    SampleHandler onSamples_;
    EndHandler onEnd_;
    std::optional<std::int64_t> nextTime_;
};

} // namespace recorder
