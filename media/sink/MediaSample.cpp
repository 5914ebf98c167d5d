#include "sink/MediaSample.h"

#include "clock/HostClock.h"

#include <stdexcept>

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace recorder {

namespace {

std::shared_ptr<AVFrame> owned(AVFrame* frame) {
    return {frame, [](AVFrame* f) { av_frame_free(&f); }};
}

} // namespace

MediaSample::MediaSample(Type type, std::shared_ptr<const AVFrame> frame, std::optional<std::int64_t> presentationTime)
    : type_(type), frame_(std::move(frame)), presentationTime_(presentationTime) {}

MediaSample MediaSample::video(std::shared_ptr<const AVFrame> frame, std::optional<std::int64_t> presentationTime) {
    return {Type::video, std::move(frame), presentationTime};
}

MediaSample MediaSample::audio(std::shared_ptr<const AVFrame> frame, std::optional<std::int64_t> presentationTime) {
    return {Type::audio, std::move(frame), presentationTime};
}

std::shared_ptr<AVFrame> MediaSample::makeVideoFrame(AVPixelFormat format, int width, int height) {
    auto frame = owned(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 64) < 0) throw std::bad_alloc();
    return frame;
}

std::shared_ptr<AVFrame> MediaSample::makeAudioFrame(AVSampleFormat format, int sampleRate, int channels, int count) {
    auto frame = owned(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    frame->format = format;
    frame->sample_rate = sampleRate;
    frame->nb_samples = count;
    av_channel_layout_default(&frame->ch_layout, channels);
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    return frame;
}

std::optional<std::int64_t> MediaSample::duration() const {
    if (type_ != Type::audio || frame_->sample_rate <= 0) return std::nullopt;
    return std::int64_t(frame_->nb_samples) * HostClock::nanosecondsPerSecond / frame_->sample_rate;
}

MediaSample MediaSample::withPresentationTime(std::int64_t presentationTime) const {
    return {type_, frame_, presentationTime};
}

} // namespace recorder
