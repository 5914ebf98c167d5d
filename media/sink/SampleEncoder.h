#pragma once

#include "sink/MediaSample.h"

#include <cstdint>
#include <functional>

extern "C" {
#include <libavcodec/packet.h>
#include <libavformat/avformat.h>
}

namespace recorder {

// Turns samples of one track into compressed packets, on the writer's thread.
// Failures throw std::runtime_error with FFmpeg's words.
class SampleEncoder {
public:
    // Receives each packet in the encoder's time base.
    using Emit = std::function<void(AVPacket* packet)>;

    virtual ~SampleEncoder() = default;
    // Opens the codec and fills in the stream's parameters, before the header.
    virtual void open(const AVFormatContext& format, AVStream& stream) = 0;
    // sessionStart is the host time that is zero in the file.
    virtual void encode(const MediaSample& sample, std::int64_t sessionStart, const Emit& emit) = 0;
    virtual void flush(const Emit& emit) = 0;
    virtual AVRational timeBase() const = 0;
};

} // namespace recorder
