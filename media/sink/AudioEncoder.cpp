#include "sink/AudioEncoder.h"

#include "sink/FFmpegCall.h"
#include "sink/PacketDrain.h"

#include <algorithm>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

namespace recorder {

namespace {

// Timestamps of captured sound jitter by a few milliseconds; only a larger
// difference is a real gap or overlap.
constexpr int toleranceDivisor = 50; // 20 ms

} // namespace

AudioEncoder::AudioEncoder(Settings settings) : settings_(settings) {}

AudioEncoder::~AudioEncoder() {
    if (fifo_) av_audio_fifo_free(fifo_);
    swr_free(&resampler_);
    avcodec_free_context(&codec_);
}

void AudioEncoder::open(const AVFormatContext& format, AVStream& stream) {
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!encoder) throw std::runtime_error("the AAC encoder is missing from this FFmpeg");
    codec_ = avcodec_alloc_context3(encoder);
    if (!codec_) throw std::bad_alloc();
    codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
    codec_->sample_rate = settings_.sampleRate;
    av_channel_layout_default(&codec_->ch_layout, settings_.channels);
    codec_->bit_rate = settings_.bitRate;
    codec_->time_base = timeBase();
    if (format.oformat->flags & AVFMT_GLOBALHEADER) codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    checked(avcodec_open2(codec_, encoder, nullptr), "opening the sound encoder");
    checked(avcodec_parameters_from_context(stream.codecpar, codec_), "describing the sound stream");
    stream.time_base = codec_->time_base;
    fifo_ = av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, settings_.channels, codec_->frame_size * 4);
    if (!fifo_) throw std::bad_alloc();
}

void AudioEncoder::prepareResampler(const AVFrame& in) {
    int channels = in.ch_layout.nb_channels;
    if (resampler_ && in.format == inFormat_ && in.sample_rate == inRate_ && channels == inChannels_) return;
    swr_free(&resampler_);
    AVChannelLayout inLayout{};
    av_channel_layout_default(&inLayout, channels);
    checked(swr_alloc_set_opts2(&resampler_, &codec_->ch_layout, AV_SAMPLE_FMT_FLTP, settings_.sampleRate, &inLayout,
                                AVSampleFormat(in.format), in.sample_rate, 0, nullptr),
            "preparing the sound converter");
    checked(swr_init(resampler_), "preparing the sound converter");
    inFormat_ = in.format;
    inRate_ = in.sample_rate;
    inChannels_ = channels;
}

void AudioEncoder::queueSilence(int count) {
    auto silence = MediaSample::makeAudioFrame(AV_SAMPLE_FMT_FLTP, settings_.sampleRate, settings_.channels, count);
    av_samples_set_silence(silence->data, 0, count, settings_.channels, AV_SAMPLE_FMT_FLTP);
    av_audio_fifo_write(fifo_, reinterpret_cast<void**>(silence->data), count);
    queuedEnd_ += count;
}

void AudioEncoder::queueConverted(const AVFrame& in, int skip) {
    int room = swr_get_out_samples(resampler_, in.nb_samples);
    auto out = MediaSample::makeAudioFrame(AV_SAMPLE_FMT_FLTP, settings_.sampleRate, settings_.channels, std::max(room, 1));
    int made = checked(swr_convert(resampler_, out->data, room, const_cast<const std::uint8_t**>(in.extended_data),
                                   in.nb_samples),
                       "converting sound");
    skip = std::min(skip, made);
    std::vector<void*> planes(std::size_t(settings_.channels));
    int bytesPerSample = av_get_bytes_per_sample(AV_SAMPLE_FMT_FLTP);
    for (int c = 0; c < settings_.channels; ++c) planes[std::size_t(c)] = out->data[c] + skip * bytesPerSample;
    av_audio_fifo_write(fifo_, planes.data(), made - skip);
    queuedEnd_ += made - skip;
}

void AudioEncoder::encode(const MediaSample& sample, std::int64_t sessionStart, const Emit& emit) {
    const AVFrame& in = sample.frame();
    if (in.nb_samples <= 0) return;
    prepareResampler(in);
    std::int64_t at = av_rescale(*sample.presentationTime() - sessionStart, settings_.sampleRate, 1'000'000'000);
    if (!started_) {
        started_ = true;
        position_ = queuedEnd_ = at;
    }
    std::int64_t gap = at - queuedEnd_;
    std::int64_t tolerance = settings_.sampleRate / toleranceDivisor;
    if (gap > tolerance) queueSilence(int(gap));
    queueConverted(in, gap < -tolerance ? int(-gap) : 0);
    sendFrames(codec_->frame_size, emit);
}

void AudioEncoder::sendFrames(int size, const Emit& emit) {
    while (av_audio_fifo_size(fifo_) >= size && size > 0) {
        auto frame = MediaSample::makeAudioFrame(AV_SAMPLE_FMT_FLTP, settings_.sampleRate, settings_.channels, size);
        av_audio_fifo_read(fifo_, reinterpret_cast<void**>(frame->data), size);
        frame->pts = position_;
        position_ += size;
        checked(avcodec_send_frame(codec_, frame.get()), "encoding sound");
        receive(emit);
    }
}

void AudioEncoder::flush(const Emit& emit) {
    sendFrames(codec_->frame_size, emit);
    // The encoder takes a shorter last frame.
    sendFrames(av_audio_fifo_size(fifo_), emit);
    checked(avcodec_send_frame(codec_, nullptr), "finishing the sound");
    receive(emit);
}

void AudioEncoder::receive(const Emit& emit) { drainPackets(codec_, emit, "encoding sound"); }

} // namespace recorder
