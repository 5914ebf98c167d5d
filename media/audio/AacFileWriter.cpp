#include "audio/AacFileWriter.h"

#include "audio/FFmpegText.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
}

#include <algorithm>
#include <cstring>

namespace recorder {

AacFileWriter::AacFileWriter(const std::filesystem::path& file, int sampleRate, int channels, int bitRate)
    : channels_(channels), planes_(std::size_t(std::max(channels, 1))) {
    try {
        check(avformat_alloc_output_context2(&format_, nullptr, "ipod", file.c_str()));
        const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
        if (!encoder) throw AudioWriteError("no AAC encoder");
        codec_ = avcodec_alloc_context3(encoder);
        codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
        codec_->sample_rate = sampleRate;
        codec_->bit_rate = bitRate;
        codec_->time_base = AVRational{1, sampleRate};
        av_channel_layout_default(&codec_->ch_layout, channels);
        if (format_->oformat->flags & AVFMT_GLOBALHEADER) codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        check(avcodec_open2(codec_, encoder, nullptr));
        stream_ = avformat_new_stream(format_, nullptr);
        if (!stream_) throw AudioWriteError("no memory for the stream");
        stream_->time_base = codec_->time_base;
        check(avcodec_parameters_from_context(stream_->codecpar, codec_));
        check(avio_open(&format_->pb, file.c_str(), AVIO_FLAG_WRITE));
        // The edit list that hides the priming is counted in the movie's time
        // scale; at the sample rate it says the length to the sample.
        AVDictionary* options = nullptr;
        av_dict_set_int(&options, "movie_timescale", sampleRate, 0);
        int status = avformat_write_header(format_, &options);
        av_dict_free(&options);
        check(status);
        frame_ = av_frame_alloc();
        packet_ = av_packet_alloc();
    } catch (...) {
        close();
        throw;
    }
}

AacFileWriter::~AacFileWriter() { close(); }

void AacFileWriter::close() {
    if (format_ && format_->pb) avio_closep(&format_->pb);
    av_packet_free(&packet_);
    av_frame_free(&frame_);
    avcodec_free_context(&codec_);
    avformat_free_context(format_);
    format_ = nullptr;
}

void AacFileWriter::check(int status) const {
    if (status < 0) throw AudioWriteError(ffmpegErrorText(status));
}

void AacFileWriter::write(const float* interleaved, int frames) {
    for (int c = 0; c < channels_; ++c) {
        auto& plane = planes_[std::size_t(c)];
        std::size_t end = plane.size();
        plane.resize(end + std::size_t(frames));
        for (int i = 0; i < frames; ++i) plane[end + std::size_t(i)] = interleaved[i * channels_ + c];
    }
    framesWritten_ += frames;
    auto frameSize = std::size_t(codec_->frame_size);
    std::size_t offset = 0;
    for (; planes_[0].size() - offset >= frameSize; offset += frameSize) encodeFrame(offset, int(frameSize));
    for (auto& plane : planes_) plane.erase(plane.begin(), plane.begin() + std::ptrdiff_t(offset));
}

void AacFileWriter::encodeFrame(std::size_t offset, int frames) {
    frame_->nb_samples = frames;
    frame_->format = codec_->sample_fmt;
    frame_->sample_rate = codec_->sample_rate;
    check(av_channel_layout_copy(&frame_->ch_layout, &codec_->ch_layout));
    check(av_frame_get_buffer(frame_, 0));
    for (int c = 0; c < channels_; ++c)
        std::memcpy(frame_->extended_data[c], planes_[std::size_t(c)].data() + offset, std::size_t(frames) * sizeof(float));
    frame_->pts = framesEncoded_;
    framesEncoded_ += frames;
    int status = avcodec_send_frame(codec_, frame_);
    av_frame_unref(frame_);
    check(status);
    drainPackets();
}

void AacFileWriter::drainPackets() {
    while (true) {
        int status = avcodec_receive_packet(codec_, packet_);
        if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return;
        check(status);
        av_packet_rescale_ts(packet_, codec_->time_base, stream_->time_base);
        packet_->stream_index = stream_->index;
        status = av_interleaved_write_frame(format_, packet_);
        av_packet_unref(packet_);
        check(status);
    }
}

void AacFileWriter::finish() {
    if (finished_) return;
    finished_ = true;
    if (!planes_[0].empty()) encodeFrame(0, int(planes_[0].size()));
    check(avcodec_send_frame(codec_, nullptr));
    drainPackets();
    check(av_write_trailer(format_));
    check(avio_closep(&format_->pb));
}

} // namespace recorder
