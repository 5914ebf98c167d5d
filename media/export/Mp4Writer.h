#pragma once

#include "export/ExportSettings.h"
#include "export/PictureWriter.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVStream;

namespace recorder {

class FramePool;

// Writes an exported MP4: H.264 High or HEVC ("hvc1") from BGRA pictures
// at exact frame times, AAC 48 kHz stereo from a sound source, the index at
// the front. Sound is pulled as the pictures go, kept at most a second
// ahead of them, and cut where the last picture ends. One thread at a time.
class Mp4Writer : public PictureWriter {
public:
    // Writes `frames` interleaved stereo 48 kHz samples that start at sample
    // `startFrame` of the output.
    using AudioSource = std::function<void(std::int64_t startFrame, float* out, int frames)>;

    // Replaces what is at the output path. Throws a sentence naming the path
    // when the file cannot be made, ExportError writer when an encoder fails.
    // `frameCount` pictures will follow; no sound source means no sound track.
    Mp4Writer(const ExportSettings& settings, std::int64_t frameCount, AudioSource audio = {});
    ~Mp4Writer() override;
    Mp4Writer(const Mp4Writer&) = delete;
    Mp4Writer& operator=(const Mp4Writer&) = delete;

    // The next picture, width by height BGRA rows `stride` bytes apart.
    void appendPicture(const std::uint8_t* bgra, int stride) override;
    // After the last picture: the rest of the sound, the index, the file.
    void finish() override;

    std::int64_t picturesWritten() const { return nextPicture_; }

private:
    void openVideo(const ExportSettings& settings);
    void openAudio();
    void encodeAudioUntil(std::int64_t sampleEnd);
    void drain(AVCodecContext* codec, AVStream* stream, AVFrame* frame);
    void closeFile();

    int fps_;
    std::int64_t frameCount_;
    std::int64_t audioEnd_;
    AudioSource audio_;
    AVFormatContext* format_ = nullptr;
    AVCodecContext* video_ = nullptr;
    AVCodecContext* sound_ = nullptr;
    AVStream* videoStream_ = nullptr;
    AVStream* audioStream_ = nullptr;
    AVPacket* packet_ = nullptr;
    AVFrame* soundFrame_ = nullptr;
    std::unique_ptr<FramePool> pictures_;
    std::unique_ptr<float[]> interleaved_;
    std::int64_t nextPicture_ = 0;
    std::int64_t nextSample_ = 0;
    bool finished_ = false;
};

} // namespace recorder
