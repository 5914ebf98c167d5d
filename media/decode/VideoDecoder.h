#pragma once

#include "decode/DecodedFrame.h"
#include "decode/FrameConverter.h"
#include "frames/FrameImage.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

struct AVFormatContext;
struct AVCodecContext;
struct AVPacket;

namespace recorder {

// The video stream of one file, decoded with FFmpeg. Seeking goes to the key
// frame at or before a time; frames then come forward in presentation order.
// Corrupt frames and packets the decoder refuses are stepped over. One
// caller at a time.
class VideoDecoder {
public:
    // Throws MediaError when the file can't be opened or holds no video.
    // `demuxerOptions` go to the container reader (delay rules of animations).
    explicit VideoDecoder(const std::filesystem::path& file,
                          const std::map<std::string, std::string>& demuxerOptions = {});
    ~VideoDecoder();
    VideoDecoder(const VideoDecoder&) = delete;
    VideoDecoder& operator=(const VideoDecoder&) = delete;

    // Seconds; 0 when the file doesn't say.
    double duration() const { return duration_; }
    // The picture's size as shown, after the file's rotation.
    int width() const { return width_; }
    int height() const { return height_; }
    bool hasAudio() const { return hasAudio_; }

    void seek(double time);
    // The last key frame at or before `time` that the file's index knows.
    std::optional<double> keyFrameAtOrBefore(double time) const;
    // None at the end of the file.
    std::optional<DecodedFrame> next();
    FrameImage image(const DecodedFrame& frame) { return converter_.convert(*frame.frame); }

private:
    bool feedDecoder();
    DecodedFrame timed(AVFrame* frame);

    std::unique_ptr<AVFormatContext, void (*)(AVFormatContext*)> format_;
    std::unique_ptr<AVCodecContext, void (*)(AVCodecContext*)> codec_;
    std::unique_ptr<AVPacket, void (*)(AVPacket*)> packet_;
    int stream_ = -1;
    double timeBase_ = 0;
    double duration_ = 0;
    int width_ = 0;
    int height_ = 0;
    bool hasAudio_ = false;
    bool draining_ = false;
    double nextTime_ = 0;
    FrameConverter converter_;
};

} // namespace recorder
