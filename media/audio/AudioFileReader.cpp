#include "audio/AudioFileReader.h"

#include "audio/FFmpegText.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>

namespace recorder {

namespace {

// An AAC frame depends on the one before it, so a seek starts decoding this
// much earlier and drops what comes before the wanted sample.
constexpr double seekPreroll = 0.2;
// A gap after a seek is filled with silence up to this long; beyond that the
// file's own timing is taken as it comes.
constexpr double longestFilledGap = 10;

int findAudioStream(AVFormatContext* format, int ordinal) {
    for (unsigned i = 0; i < format->nb_streams; ++i)
        if (format->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO && ordinal-- == 0) return int(i);
    return -1;
}

AVFormatContext* openFormat(const std::filesystem::path& file) {
    AVFormatContext* format = nullptr;
    int status = avformat_open_input(&format, file.c_str(), nullptr, nullptr);
    if (status < 0) throw AudioReadError(ffmpegErrorText(status));
    status = avformat_find_stream_info(format, nullptr);
    if (status < 0) {
        avformat_close_input(&format);
        throw AudioReadError(ffmpegErrorText(status));
    }
    return format;
}

} // namespace

AudioFileReader::AudioFileReader(const std::filesystem::path& file, AudioFormat format, int streamOrdinal) {
    format_ = openFormat(file);
    try {
        streamIndex_ = findAudioStream(format_, streamOrdinal);
        if (streamIndex_ < 0) throw NoSoundError();
        AVStream* stream = format_->streams[streamIndex_];
        const AVCodec* decoder = avcodec_find_decoder(stream->codecpar->codec_id);
        if (!decoder) throw AudioReadError("no decoder for its sound");
        codec_ = avcodec_alloc_context3(decoder);
        avcodec_parameters_to_context(codec_, stream->codecpar);
        // Lets the decoder keep timestamps right when it drops priming samples.
        codec_->pkt_timebase = stream->time_base;
        int status = avcodec_open2(codec_, decoder, nullptr);
        if (status < 0) throw AudioReadError(ffmpegErrorText(status));
        if (codec_->sample_rate <= 0) throw AudioReadError("its sound has no sample rate");
        packet_ = av_packet_alloc();
        frame_ = av_frame_alloc();
        origin_ = stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time;
        // MP4 states its length to the sample (the edit list), but the decoder
        // still hands out the padding of the last AAC frame.
        bool mp4 = std::strstr(format_->iformat->name, "mp4") != nullptr;
        if (mp4 && stream->duration != AV_NOPTS_VALUE && stream->duration > 0)
            endSample_ = av_rescale_q(stream->duration, stream->time_base, AVRational{1, codec_->sample_rate});
        outRate_ = format.sampleRate > 0 ? format.sampleRate : codec_->sample_rate;
        outChannels_ = format.channels > 0 ? format.channels : std::max(codec_->ch_layout.nb_channels, 1);
    } catch (...) {
        close();
        throw;
    }
}

AudioFileReader::~AudioFileReader() { close(); }

void AudioFileReader::close() {
    swr_free(&resampler_);
    av_frame_free(&frame_);
    av_packet_free(&packet_);
    avcodec_free_context(&codec_);
    avformat_close_input(&format_);
}

int AudioFileReader::audioStreamCount(const std::filesystem::path& file) {
    try {
        AVFormatContext* format = openFormat(file);
        int count = 0;
        for (unsigned i = 0; i < format->nb_streams; ++i)
            if (format->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) ++count;
        avformat_close_input(&format);
        return count;
    } catch (const AudioReadError&) {
        return 0;
    }
}

int AudioFileReader::fileSampleRate() const { return codec_->sample_rate; }
int AudioFileReader::fileChannels() const { return codec_->ch_layout.nb_channels; }

double AudioFileReader::duration() const {
    AVStream* stream = format_->streams[streamIndex_];
    if (stream->duration != AV_NOPTS_VALUE && stream->duration > 0) return double(stream->duration) * av_q2d(stream->time_base);
    if (format_->duration != AV_NOPTS_VALUE && format_->duration > 0) return double(format_->duration) / AV_TIME_BASE;
    return 0;
}

void AudioFileReader::seek(double fileSeconds, double speed) {
    fileSeconds = std::max(fileSeconds, 0.0);
    speed_ = speed > 0 ? speed : 1;
    AVStream* stream = format_->streams[streamIndex_];
    // May point before the origin: that reaches an MP4's priming packet too.
    std::int64_t timestamp = origin_ + std::int64_t(std::floor((fileSeconds - seekPreroll) / av_q2d(stream->time_base)));
    if (av_seek_frame(format_, streamIndex_, timestamp, AVSEEK_FLAG_BACKWARD) < 0)
        av_seek_frame(format_, streamIndex_, origin_, AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(codec_);
    swr_free(&resampler_);
    buffer_.clear();
    bufferStart_ = 0;
    inputEnded_ = ended_ = false;
    nextSample_ = 0;
    dropBefore_ = std::llround(fileSeconds * codec_->sample_rate);
}

int AudioFileReader::read(float* out, int frames) {
    auto wanted = std::size_t(frames) * std::size_t(outChannels_);
    while (buffer_.size() - bufferStart_ < wanted && decodeMore()) {
    }
    std::size_t available = std::min(wanted, buffer_.size() - bufferStart_);
    std::memcpy(out, buffer_.data() + bufferStart_, available * sizeof(float));
    bufferStart_ += available;
    if (bufferStart_ > buffer_.size() / 2) {
        buffer_.erase(buffer_.begin(), buffer_.begin() + std::ptrdiff_t(bufferStart_));
        bufferStart_ = 0;
    }
    return int(available / std::size_t(outChannels_));
}

// One step of decoding; false once everything, the resampler's tail too, is out.
bool AudioFileReader::decodeMore() {
    if (ended_) return false;
    if (receiveFrames()) return true;
    if (inputEnded_) {
        drainResampler();
        ended_ = true;
        return true;
    }
    sendPacketOrFlush();
    return true;
}

bool AudioFileReader::receiveFrames() {
    bool received = false;
    while (avcodec_receive_frame(codec_, frame_) == 0) {
        takeFrame(frame_);
        av_frame_unref(frame_);
        received = true;
    }
    return received;
}

void AudioFileReader::sendPacketOrFlush() {
    while (true) {
        int status = av_read_frame(format_, packet_);
        if (status < 0) {
            // The end, or damage we can't read past: decode what came so far.
            avcodec_send_packet(codec_, nullptr);
            inputEnded_ = true;
            return;
        }
        bool ours = packet_->stream_index == streamIndex_;
        // A packet the decoder refuses is skipped; the ones after it still play.
        if (ours) avcodec_send_packet(codec_, packet_);
        av_packet_unref(packet_);
        if (ours) return;
    }
}

std::int64_t AudioFileReader::firstSampleOf(const AVFrame* frame) const {
    if (frame->pts == AV_NOPTS_VALUE) return nextSample_;
    AVRational tb = format_->streams[streamIndex_]->time_base;
    return av_rescale_q(frame->pts - origin_, tb, AVRational{1, codec_->sample_rate});
}

void AudioFileReader::takeFrame(const AVFrame* frame) {
    std::int64_t first = firstSampleOf(frame);
    int count = frame->nb_samples;
    if (endSample_ >= 0) count = int(std::clamp<std::int64_t>(endSample_ - first, 0, count));
    int skip = 0;
    if (dropBefore_ >= 0) {
        if (first + count <= dropBefore_) {
            nextSample_ = first + count;
            return;
        }
        if (first < dropBefore_) {
            skip = int(dropBefore_ - first);
        } else if (first > dropBefore_ && first - dropBefore_ < std::int64_t(longestFilledGap * codec_->sample_rate)) {
            double seconds = double(first - dropBefore_) / codec_->sample_rate / speed_;
            buffer_.resize(buffer_.size() + std::size_t(std::llround(seconds * outRate_)) * std::size_t(outChannels_));
        }
        dropBefore_ = -1;
    }
    prepareResampler(frame);
    nextSample_ = first + count;

    const std::uint8_t* input[AV_NUM_DATA_POINTERS] = {};
    bool planar = av_sample_fmt_is_planar(AVSampleFormat(frame->format));
    int bytes = av_get_bytes_per_sample(AVSampleFormat(frame->format));
    int planes = planar ? frame->ch_layout.nb_channels : 1;
    int stride = planar ? bytes : bytes * frame->ch_layout.nb_channels;
    for (int p = 0; p < planes && p < AV_NUM_DATA_POINTERS; ++p) input[p] = frame->extended_data[p] + skip * stride;
    if (count > skip) convert(input, count - skip);
}

void AudioFileReader::prepareResampler(const AVFrame* frame) {
    int inRate = int(std::lround(frame->sample_rate * speed_));
    if (resampler_ && inRate == resamplerInRate_ && frame->format == resamplerInFormat_ &&
        frame->ch_layout.nb_channels == resamplerInChannels_)
        return;
    swr_free(&resampler_);
    AVChannelLayout outLayout;
    av_channel_layout_default(&outLayout, outChannels_);
    AVChannelLayout inLayout;
    if (frame->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&inLayout, frame->ch_layout.nb_channels);
    else
        av_channel_layout_copy(&inLayout, &frame->ch_layout);
    swr_alloc_set_opts2(&resampler_, &outLayout, AV_SAMPLE_FMT_FLT, outRate_, &inLayout,
                        AVSampleFormat(frame->format), inRate, 0, nullptr);
    // A single voice belongs in both ears at full level, not 3 dB down.
    if (inLayout.nb_channels == 1 && outChannels_ == 2) {
        const double matrix[2] = {1, 1};
        swr_set_matrix(resampler_, matrix, 1);
    }
    av_channel_layout_uninit(&inLayout);
    av_channel_layout_uninit(&outLayout);
    if (swr_init(resampler_) < 0) swr_free(&resampler_);
    resamplerInRate_ = inRate;
    resamplerInFormat_ = frame->format;
    resamplerInChannels_ = frame->ch_layout.nb_channels;
}

void AudioFileReader::convert(const std::uint8_t* const* input, int count) {
    if (!resampler_) return;
    int room = swr_get_out_samples(resampler_, count);
    if (room <= 0) return;
    std::size_t end = buffer_.size();
    buffer_.resize(end + std::size_t(room) * std::size_t(outChannels_));
    std::uint8_t* output[1] = {reinterpret_cast<std::uint8_t*>(buffer_.data() + end)};
    int made = swr_convert(resampler_, output, room, const_cast<const std::uint8_t**>(input), count);
    buffer_.resize(end + std::size_t(std::max(made, 0)) * std::size_t(outChannels_));
}

void AudioFileReader::drainResampler() { convert(nullptr, 0); }

} // namespace recorder
