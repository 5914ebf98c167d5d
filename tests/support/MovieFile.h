#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace recorder::test {

// One decoded picture in BGRA, for looking at pixels.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bgra;

    struct Pixel {
        int b = 0, g = 0, r = 0;
    };
    Pixel at(int x, int y) const {
        const std::uint8_t* p = &bgra[(std::size_t(y) * std::size_t(width) + std::size_t(x)) * 4];
        return {p[0], p[1], p[2]};
    }
};

// A media file as any reader sees it, through libavformat and libavcodec.
class MovieFile {
public:
    struct Packet {
        double time = 0;
        double duration = 0;
        bool key = false;
    };

    explicit MovieFile(const std::filesystem::path& path) {
        if (avformat_open_input(&format_, path.c_str(), nullptr, nullptr) < 0)
            throw std::runtime_error("cannot open " + path.string());
        avformat_find_stream_info(format_, nullptr);
        video_ = av_find_best_stream(format_, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        audio_ = av_find_best_stream(format_, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
        readPackets();
    }
    ~MovieFile() { avformat_close_input(&format_); }
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;

    bool hasVideo() const { return video_ >= 0; }
    bool hasAudio() const { return audio_ >= 0; }
    int width() const { return video_ >= 0 ? format_->streams[video_]->codecpar->width : 0; }
    int height() const { return video_ >= 0 ? format_->streams[video_]->codecpar->height : 0; }
    std::string videoCodec() const { return video_ >= 0 ? avcodec_get_name(format_->streams[video_]->codecpar->codec_id) : ""; }
    const std::vector<Packet>& videoPackets() const { return videoPackets_; }
    const std::vector<Packet>& audioPackets() const { return audioPackets_; }
    // Where the last picture (or sound) ends.
    double videoDuration() const { return streamDuration(video_, videoPackets_); }
    double audioDuration() const { return streamDuration(audio_, audioPackets_); }
    double containerDuration() const { return format_->duration > 0 ? double(format_->duration) / AV_TIME_BASE : 0; }

    // Every picture, decoded in order.
    std::vector<Picture> pictures() {
        std::vector<Picture> out;
        decodeVideo([&](const AVFrame& frame) { out.push_back(toPicture(frame)); });
        return out;
    }

private:
    double streamDuration(int index, const std::vector<Packet>& packets) const {
        if (index < 0) return 0;
        AVStream* stream = format_->streams[index];
        if (stream->duration > 0) return double(stream->duration) * av_q2d(stream->time_base);
        return packets.empty() ? 0 : packets.back().time + packets.back().duration;
    }

    void readPackets() {
        AVPacket* packet = av_packet_alloc();
        while (av_read_frame(format_, packet) >= 0) {
            AVStream* stream = format_->streams[packet->stream_index];
            Packet p{packet->pts * av_q2d(stream->time_base), packet->duration * av_q2d(stream->time_base),
                     (packet->flags & AV_PKT_FLAG_KEY) != 0};
            if (packet->stream_index == video_) videoPackets_.push_back(p);
            if (packet->stream_index == audio_) audioPackets_.push_back(p);
            av_packet_unref(packet);
        }
        av_packet_free(&packet);
    }

    template <class F>
    void decodeVideo(F&& each) {
        if (video_ < 0) return;
        av_seek_frame(format_, video_, 0, AVSEEK_FLAG_BACKWARD);
        AVStream* stream = format_->streams[video_];
        const AVCodec* decoder = avcodec_find_decoder(stream->codecpar->codec_id);
        AVCodecContext* codec = avcodec_alloc_context3(decoder);
        avcodec_parameters_to_context(codec, stream->codecpar);
        avcodec_open2(codec, decoder, nullptr);
        AVPacket* packet = av_packet_alloc();
        AVFrame* frame = av_frame_alloc();
        auto receive = [&] {
            while (avcodec_receive_frame(codec, frame) >= 0) each(*frame);
        };
        while (av_read_frame(format_, packet) >= 0) {
            if (packet->stream_index == video_) {
                avcodec_send_packet(codec, packet);
                receive();
            }
            av_packet_unref(packet);
        }
        avcodec_send_packet(codec, nullptr);
        receive();
        av_frame_free(&frame);
        av_packet_free(&packet);
        avcodec_free_context(&codec);
    }

    static Picture toPicture(const AVFrame& frame) {
        // libswscale writes whole SIMD blocks past a row's end: room to spare.
        Picture picture{frame.width, frame.height, std::vector<std::uint8_t>(std::size_t(frame.width * frame.height * 4 + 256))};
        SwsContext* scale = sws_getContext(frame.width, frame.height, AVPixelFormat(frame.format), frame.width,
                                           frame.height, AV_PIX_FMT_BGRA, SWS_POINT, nullptr, nullptr, nullptr);
        // The recorder writes BT.601 limited range; read it back the same way.
        const int* coefficients = sws_getCoefficients(SWS_CS_ITU601);
        sws_setColorspaceDetails(scale, coefficients, 0, coefficients, 1, 0, 1 << 16, 1 << 16);
        std::uint8_t* out[4] = {picture.bgra.data(), nullptr, nullptr, nullptr};
        int stride[4] = {frame.width * 4, 0, 0, 0};
        sws_scale(scale, frame.data, frame.linesize, 0, frame.height, out, stride);
        sws_freeContext(scale);
        return picture;
    }

    AVFormatContext* format_ = nullptr;
    int video_ = -1;
    int audio_ = -1;
    std::vector<Packet> videoPackets_;
    std::vector<Packet> audioPackets_;
};

} // namespace recorder::test
