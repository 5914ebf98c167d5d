#include "decode/VideoDecoder.h"

#include "decode/MediaError.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

#include <cmath>

namespace recorder {

namespace {

void closeFormat(AVFormatContext* f) { avformat_close_input(&f); }
void freeCodec(AVCodecContext* c) { avcodec_free_context(&c); }
void freePacket(AVPacket* p) { av_packet_free(&p); }

AVFormatContext* openFormat(const std::filesystem::path& file, const std::map<std::string, std::string>& options) {
    AVDictionary* dictionary = nullptr;
    for (const auto& [key, value] : options) av_dict_set(&dictionary, key.c_str(), value.c_str(), 0);
    AVFormatContext* format = nullptr;
    int status = avformat_open_input(&format, file.c_str(), nullptr, &dictionary);
    av_dict_free(&dictionary);
    if (status < 0) throw MediaError("The file " + file.filename().string() + " can't be opened as a picture or video.");
    if (avformat_find_stream_info(format, nullptr) < 0) {
        avformat_close_input(&format);
        throw MediaError("The file " + file.filename().string() + " can't be read; it may be damaged.");
    }
    return format;
}

// Clockwise quarter turns that make the picture stand upright.
int uprightRotation(const AVStream& stream) {
    const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (!matrix) return 0;
    double counterClockwise = av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
    if (std::isnan(counterClockwise)) return 0;
    int quarter = int(std::lround(-counterClockwise / 90.0));
    return ((quarter % 4) + 4) % 4 * 90;
}

double streamDuration(const AVFormatContext& format, const AVStream& stream, double timeBase) {
    if (stream.duration > 0 && stream.duration != AV_NOPTS_VALUE) return double(stream.duration) * timeBase;
    if (format.duration > 0) return double(format.duration) / AV_TIME_BASE;
    return 0;
}

} // namespace

VideoDecoder::VideoDecoder(const std::filesystem::path& file, const std::map<std::string, std::string>& options)
    : format_(openFormat(file, options), closeFormat), codec_(nullptr, freeCodec), packet_(av_packet_alloc(), freePacket) {
    const AVCodec* decoder = nullptr;
    stream_ = av_find_best_stream(format_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (stream_ < 0 || !decoder) throw MediaError("The file " + file.filename().string() + " holds no picture.");
    const AVStream& stream = *format_->streams[stream_];
    codec_.reset(avcodec_alloc_context3(decoder));
    if (!codec_ || avcodec_parameters_to_context(codec_.get(), stream.codecpar) < 0)
        throw MediaError("The file " + file.filename().string() + " uses a picture format this computer can't read.");
    codec_->thread_count = 2;
    codec_->pkt_timebase = stream.time_base;
    if (avcodec_open2(codec_.get(), decoder, nullptr) < 0)
        throw MediaError("The file " + file.filename().string() + " uses a picture format this computer can't read.");
    for (unsigned i = 0; i < format_->nb_streams; ++i)
        if (format_->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) hasAudio_ = true;
    timeBase_ = av_q2d(stream.time_base);
    duration_ = streamDuration(*format_, stream, timeBase_);
    int rotation = uprightRotation(stream);
    bool quarter = rotation == 90 || rotation == 270;
    width_ = quarter ? stream.codecpar->height : stream.codecpar->width;
    height_ = quarter ? stream.codecpar->width : stream.codecpar->height;
    converter_.setRotation(rotation);
}

VideoDecoder::~VideoDecoder() = default;

void VideoDecoder::seek(double time) {
    auto timestamp = std::int64_t(std::floor(std::max(time, 0.0) / timeBase_));
    if (av_seek_frame(format_.get(), stream_, timestamp, AVSEEK_FLAG_BACKWARD) < 0)
        av_seek_frame(format_.get(), stream_, 0, AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY);
    avcodec_flush_buffers(codec_.get());
    draining_ = false;
}

std::optional<double> VideoDecoder::keyFrameAtOrBefore(double time) const {
    AVStream* stream = format_->streams[stream_];
    auto timestamp = std::int64_t(std::floor(std::max(time, 0.0) / timeBase_));
    const AVIndexEntry* entry = avformat_index_get_entry_from_timestamp(stream, timestamp, AVSEEK_FLAG_BACKWARD);
    if (!entry) return std::nullopt;
    return double(entry->timestamp) * timeBase_;
}

std::optional<DecodedFrame> VideoDecoder::next() {
    AVFrame* frame = av_frame_alloc();
    std::shared_ptr<AVFrame> owner(frame, [](AVFrame* f) { av_frame_free(&f); });
    for (;;) {
        int status = avcodec_receive_frame(codec_.get(), frame);
        if (status == 0) {
            if ((frame->flags & AV_FRAME_FLAG_CORRUPT) || frame->decode_error_flags) {
                av_frame_unref(frame);
                continue;
            }
            DecodedFrame decoded = timed(frame);
            decoded.frame = std::move(owner);
            return decoded;
        }
        if (status != AVERROR(EAGAIN) || !feedDecoder()) return std::nullopt;
    }
}

// Sends the next packet of our stream, or the end-of-stream mark once.
bool VideoDecoder::feedDecoder() {
    if (draining_) return false;
    for (;;) {
        int status = av_read_frame(format_.get(), packet_.get());
        if (status < 0) {
            draining_ = true;
            avcodec_send_packet(codec_.get(), nullptr);
            return true;
        }
        bool ours = packet_->stream_index == stream_;
        // A packet the decoder refuses is damaged: skip it and go on.
        bool sent = ours && avcodec_send_packet(codec_.get(), packet_.get()) == 0;
        av_packet_unref(packet_.get());
        if (sent) return true;
    }
}

DecodedFrame VideoDecoder::timed(AVFrame* frame) {
    DecodedFrame decoded;
    decoded.duration = frame->pkt_duration > 0 ? double(frame->pkt_duration) * timeBase_ : 0;
    std::int64_t pts = frame->best_effort_timestamp;
    decoded.time = pts == AV_NOPTS_VALUE ? nextTime_ : double(pts) * timeBase_;
    nextTime_ = decoded.time + decoded.duration;
    return decoded;
}

} // namespace recorder
