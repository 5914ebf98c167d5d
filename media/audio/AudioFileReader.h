#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <vector>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct SwrContext;

namespace recorder {

// The shape of decoded sound; 0 keeps the file's own rate or channel count.
struct AudioFormat {
    int sampleRate = 0;
    int channels = 0;
};

// A file that can't be read as sound, with FFmpeg's words for why.
class AudioReadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A file that opens but has no audio stream, like a silent video.
class NoSoundError : public AudioReadError {
public:
    NoSoundError() : AudioReadError("it has no sound") {}
};

// Decodes one audio stream of any file FFmpeg reads into interleaved 32-bit
// float frames at the rate and channel count asked for. Reads forward;
// `seek` moves anywhere, sample-exact, and sets a speed: at speed s every
// output second covers s seconds of the file, the pitch rising with it.
// A damaged or truncated file simply ends early.
class AudioFileReader {
public:
    // `streamOrdinal` counts audio streams only. Throws AudioReadError.
    explicit AudioFileReader(const std::filesystem::path& file, AudioFormat format = {}, int streamOrdinal = 0);
    ~AudioFileReader();
    AudioFileReader(const AudioFileReader&) = delete;
    AudioFileReader& operator=(const AudioFileReader&) = delete;

    // How many audio streams the file has; 0 when it can't be opened.
    static int audioStreamCount(const std::filesystem::path& file);

    int sampleRate() const { return outRate_; }
    int channels() const { return outChannels_; }
    int fileSampleRate() const;
    int fileChannels() const;
    // The stream's length in seconds as its container states it; 0 unknown.
    double duration() const;
    double speed() const { return speed_; }

    void seek(double fileSeconds, double speed = 1);
    // Up to `frames` frames into `out`; fewer only when the file has ended.
    int read(float* out, int frames);

private:
    bool decodeMore();
    bool receiveFrames();
    void sendPacketOrFlush();
    void takeFrame(const AVFrame* frame);
    void convert(const std::uint8_t* const* input, int count);
    void prepareResampler(const AVFrame* frame);
    void drainResampler();
    std::int64_t firstSampleOf(const AVFrame* frame) const;
    void close();

    AVFormatContext* format_ = nullptr;
    AVCodecContext* codec_ = nullptr;
    SwrContext* resampler_ = nullptr;
    AVPacket* packet_ = nullptr;
    AVFrame* frame_ = nullptr;
    int streamIndex_ = -1;
    int outRate_ = 0;
    int outChannels_ = 0;
    double speed_ = 1;
    int resamplerInRate_ = 0;
    int resamplerInFormat_ = -1;
    int resamplerInChannels_ = 0;
    std::int64_t origin_ = 0;       // the stream's first timestamp
    std::int64_t nextSample_ = 0;   // file sample index of the next decoded sample
    std::int64_t endSample_ = -1;   // where the stream says it ends, when it says so exactly
    std::int64_t dropBefore_ = -1;  // after a seek: samples before this index are dropped
    bool inputEnded_ = false;
    bool ended_ = false;
    std::vector<float> buffer_;
    std::size_t bufferStart_ = 0;
};

} // namespace recorder
