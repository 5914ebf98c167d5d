#include "sink/MediaWriterInput.h"

#include "sink/MediaWriter.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace recorder {

namespace {

// A picture in hand is one being encoded and one waiting; sound runs are
// small and come in bursts.
constexpr int videoCapacity = 2;
constexpr int audioCapacity = 8;

std::unique_ptr<SampleEncoder> makeEncoder(const MediaWriterInput::Settings& settings) {
    if (auto* video = std::get_if<VideoEncoder::Settings>(&settings)) return std::make_unique<VideoEncoder>(*video);
    return std::make_unique<AudioEncoder>(std::get<AudioEncoder::Settings>(settings));
}

} // namespace

MediaWriterInput::MediaWriterInput(MediaWriter& writer, Settings settings, AVStream& stream)
    : writer_(writer), settings_(std::move(settings)), stream_(stream), encoder_(makeEncoder(settings_)),
      capacity_(std::holds_alternative<VideoEncoder::Settings>(settings_) ? videoCapacity : audioCapacity) {}

MediaWriterInput::~MediaWriterInput() { av_packet_free(&held_); }

bool MediaWriterInput::isReadyForMoreMediaData() const {
    return !finished_ && writer_.status() == MediaWriter::Status::writing && inHand_ < capacity_;
}

bool MediaWriterInput::append(const MediaSample& sample) {
    if (finished_ || writer_.status() != MediaWriter::Status::writing || !sample.presentationTime()) return false;
    ++inHand_;
    writer_.run([this, sample] {
        encode(sample, writer_.sessionStart_.value_or(*sample.presentationTime()));
        --inHand_;
    });
    return true;
}

void MediaWriterInput::markAsFinished() { finished_ = true; }

void MediaWriterInput::repeatLastPicture(std::int64_t presentationTime) {
    auto* video = dynamic_cast<VideoEncoder*>(encoder_.get());
    if (finished_ || !video || writer_.status() != MediaWriter::Status::writing) return;
    writer_.run([this, video, presentationTime] {
        if (writer_.status() != MediaWriter::Status::writing) return;
        video->repeat(presentationTime, sessionStart_, [this](AVPacket* packet) { hold(packet); });
        writer_.flushFragment();
    });
}

void MediaWriterInput::open(const AVFormatContext& format) { encoder_->open(format, stream_); }

void MediaWriterInput::encode(const MediaSample& sample, std::int64_t sessionStart) {
    if (writer_.status() != MediaWriter::Status::writing) return;
    sessionStart_ = sessionStart;
    encoder_->encode(sample, sessionStart, [this](AVPacket* packet) { hold(packet); });
}

void MediaWriterInput::hold(AVPacket* packet) {
    av_packet_rescale_ts(packet, encoder_->timeBase(), stream_.time_base);
    packet->stream_index = stream_.index;
    if (held_ && held_->size > 0) writeHeld(packet->dts - held_->dts);
    if (!held_) held_ = av_packet_alloc();
    av_packet_move_ref(held_, packet);
}

void MediaWriterInput::writeHeld(std::optional<std::int64_t> duration) {
    if (duration && *duration > 0) held_->duration = *duration;
    writer_.writePacket(held_);
    av_packet_unref(held_);
}

void MediaWriterInput::flush(std::optional<std::int64_t> sessionEnd) {
    encoder_->flush([this](AVPacket* packet) { hold(packet); });
    if (!held_ || held_->size == 0) return;
    std::optional<std::int64_t> duration;
    bool isVideo = std::holds_alternative<VideoEncoder::Settings>(settings_);
    if (isVideo && sessionEnd) {
        std::int64_t end = av_rescale_q(*sessionEnd - sessionStart_, {1, 1'000'000'000}, stream_.time_base);
        duration = end - held_->pts;
    }
    if (isVideo && !duration && held_->duration <= 0) {
        int fps = std::get<VideoEncoder::Settings>(settings_).fps;
        duration = av_rescale_q(1, {1, fps}, stream_.time_base);
    }
    writeHeld(duration);
}

} // namespace recorder
