#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <vector>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVStream;

namespace recorder {

// A sound file that couldn't be written, with FFmpeg's words for why.
class AudioWriteError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Writes interleaved float samples to an AAC file in an MP4 (".m4a")
// container with FFmpeg's own encoder. The container's edit list hides the
// encoder's priming, so the file decodes to exactly the frames written.
class AacFileWriter {
public:
    // Throws AudioWriteError.
    AacFileWriter(const std::filesystem::path& file, int sampleRate, int channels, int bitRate);
    // Without `finish` the file is left incomplete.
    ~AacFileWriter();
    AacFileWriter(const AacFileWriter&) = delete;
    AacFileWriter& operator=(const AacFileWriter&) = delete;

    void write(const float* interleaved, int frames);
    void finish();
    std::int64_t framesWritten() const { return framesWritten_; }

private:
    void encodeFrame(std::size_t offset, int frames);
    void drainPackets();
    void check(int status) const;
    void close();

    AVFormatContext* format_ = nullptr;
    AVCodecContext* codec_ = nullptr;
    AVStream* stream_ = nullptr;
    AVFrame* frame_ = nullptr;
    AVPacket* packet_ = nullptr;
    int channels_ = 0;
    std::vector<std::vector<float>> planes_;
    std::int64_t framesWritten_ = 0;
    std::int64_t framesEncoded_ = 0;
    bool finished_ = false;
};

} // namespace recorder
