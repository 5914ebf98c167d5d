#pragma once

#include "sink/AudioEncoder.h"
#include "sink/MediaSample.h"
#include "sink/VideoEncoder.h"

#include <atomic>
#include <memory>
#include <optional>
#include <variant>

extern "C" {
#include <libavcodec/packet.h>
}

namespace recorder {

class MediaWriter;

// One track of a MediaWriter. append() never waits: it hands the sample to
// the writer's thread, and the input reports itself not ready while it has as
// many samples in hand as it is willing to hold.
class MediaWriterInput {
public:
    using Settings = std::variant<VideoEncoder::Settings, AudioEncoder::Settings>;

    MediaWriterInput(MediaWriter& writer, Settings settings, AVStream& stream);
    ~MediaWriterInput();
    MediaWriterInput(const MediaWriterInput&) = delete;
    MediaWriterInput& operator=(const MediaWriterInput&) = delete;

    bool isReadyForMoreMediaData() const;
    // False once the writer has failed or the input was marked finished.
    bool append(const MediaSample& sample);
    void markAsFinished();
    // Pictures: writes the last one again at a later host time and pushes
    // everything written so far out to the file.
    void repeatLastPicture(std::int64_t presentationTime);

    const Settings& settings() const { return settings_; }

private:
    friend class MediaWriter;

    // On the writer's thread.
    void open(const AVFormatContext& format);
    void encode(const MediaSample& sample, std::int64_t sessionStart);
    void flush(std::optional<std::int64_t> sessionEnd);
    void hold(AVPacket* packet);
    void writeHeld(std::optional<std::int64_t> duration);

    MediaWriter& writer_;
    Settings settings_;
    AVStream& stream_;
    std::unique_ptr<SampleEncoder> encoder_;
    int capacity_;
    std::atomic<int> inHand_{0};
    std::atomic<bool> finished_{false};
    // Each packet waits for the next, which tells how long it lasts; the
    // last one lasts until the session's end.
    AVPacket* held_ = nullptr;
    std::int64_t sessionStart_ = 0;
};

} // namespace recorder
