#pragma once

#include "sink/MediaFormat.h"
#include "sink/SampleEncoder.h"

#include <memory>

struct AVCodecContext;

namespace recorder {

// H.264 (libx264) or HEVC (libx265) of BGRA or I420 pictures at a fixed size,
// with a variable frame rate: a picture is stamped when it arrived.
class VideoEncoder : public SampleEncoder {
public:
    struct Settings {
        int width = 0;
        int height = 0;
        VideoCodec codec = VideoCodec::h264;
        int fps = 60;
        std::int64_t averageBitRate = 0;
        int maxKeyFrameInterval = 120;
        bool allowFrameReordering = false;
    };

    explicit VideoEncoder(Settings settings);
    ~VideoEncoder() override;

    void open(const AVFormatContext& format, AVStream& stream) override;
    void encode(const MediaSample& sample, std::int64_t sessionStart, const Emit& emit) override;
    // The last picture once more, at a later host time.
    void repeat(std::int64_t presentationTime, std::int64_t sessionStart, const Emit& emit);
    void flush(const Emit& emit) override;
    AVRational timeBase() const override { return {1, 90000}; }

private:
    const AVFrame& toEncoderPicture(const AVFrame& picture);
    void send(const AVFrame& picture, std::int64_t presentationTime, std::int64_t sessionStart, const Emit& emit);
    void receive(const Emit& emit);

    Settings settings_;
    AVCodecContext* codec_ = nullptr;
    std::shared_ptr<AVFrame> picture_;
    std::shared_ptr<AVFrame> unscaled_;
    std::shared_ptr<const AVFrame> last_;
    std::int64_t lastPts_ = -1;
};

} // namespace recorder
