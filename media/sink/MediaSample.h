#pragma once

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
#include <libavutil/samplefmt.h>
}

#include <cstdint>
#include <memory>
#include <optional>

namespace recorder {

// A picture or a run of sound, stamped in host-clock nanoseconds, on its way
// to a file. Copies share the pixels or samples, so handing one to another
// thread costs a reference count, never a copy of the data.
class MediaSample {
public:
    enum class Type { video, audio };

    // BGRA or I420 pictures; interleaved float or 16-bit sound.
    static MediaSample video(std::shared_ptr<const AVFrame> frame, std::optional<std::int64_t> presentationTime);
    static MediaSample audio(std::shared_ptr<const AVFrame> frame, std::optional<std::int64_t> presentationTime);

    static std::shared_ptr<AVFrame> makeVideoFrame(AVPixelFormat format, int width, int height);
    static std::shared_ptr<AVFrame> makeAudioFrame(AVSampleFormat format, int sampleRate, int channels, int count);

    Type type() const { return type_; }
    std::optional<std::int64_t> presentationTime() const { return presentationTime_; }
    // Sound knows its length; a picture lasts until the next one.
    std::optional<std::int64_t> duration() const;
    const AVFrame& frame() const { return *frame_; }

    // The same data at another time.
    MediaSample withPresentationTime(std::int64_t presentationTime) const;

private:
    MediaSample(Type type, std::shared_ptr<const AVFrame> frame, std::optional<std::int64_t> presentationTime);

    Type type_;
    std::shared_ptr<const AVFrame> frame_;
    std::optional<std::int64_t> presentationTime_;
};

} // namespace recorder
