#include "export/Mp4Writer.h"

#include "export/ExportError.h"
#include "sink/FFmpegCall.h"
#include "sink/FramePool.h"

#include <libyuv.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <system_error>

namespace recorder {

namespace {

constexpr int sampleRate = 48000;
// Sound may run this far ahead of the picture before we wait for pictures.
constexpr double audioLead = 1.0;

// An encoder's or muxer's failure, as the person reads it.
int writerChecked(int code) {
    if (code < 0) throw ExportError(ExportError::Kind::writer);
    return code;
}

// Sample position of a moment given as `count` periods of 1/`rate` seconds.
std::int64_t samplesAt(std::int64_t count, int rate) { return count * sampleRate / rate; }

} // namespace

Mp4Writer::Mp4Writer(const ExportSettings& settings, std::int64_t frameCount, AudioSource audio)
    : fps_(settings.fps), frameCount_(frameCount), audioEnd_(samplesAt(frameCount, settings.fps)),
      audio_(std::move(audio)) {
    if (frameCount < 1) throw ExportError(ExportError::Kind::empty);
    std::error_code ignored;
    std::filesystem::remove(settings.outputURL, ignored);
    try {
        checked(avformat_alloc_output_context2(&format_, nullptr, "mp4", settings.outputURL.c_str()), "mp4");
        packet_ = av_packet_alloc();
        if (!packet_) throw std::bad_alloc();
        openVideo(settings);
        if (audio_) openAudio();
        int opened = avio_open(&format_->pb, settings.outputURL.c_str(), AVIO_FLAG_WRITE);
        if (opened < 0)
            throw std::runtime_error("The file " + settings.outputURL.string() +
                                     " could not be written: " + ffmpegMessage(opened) + ".");
        AVDictionary* options = nullptr;
        // The index goes to the front, so players start before the whole file is in.
        av_dict_set(&options, "movflags", "+faststart", 0);
        int written = avformat_write_header(format_, &options);
        av_dict_free(&options);
        writerChecked(written);
    } catch (...) {
        closeFile();
        throw;
    }
}

Mp4Writer::~Mp4Writer() { closeFile(); }

void Mp4Writer::openVideo(const ExportSettings& settings) {
    bool hevc = settings.format == ExportFormat::mp4HEVC;
    const AVCodec* encoder = avcodec_find_encoder_by_name(hevc ? "libx265" : "libx264");
    if (!encoder) throw ExportError(ExportError::Kind::writer);
    video_ = avcodec_alloc_context3(encoder);
    if (!video_) throw std::bad_alloc();
    video_->width = settings.width;
    video_->height = settings.height;
    video_->pix_fmt = AV_PIX_FMT_YUV420P;
    video_->time_base = {1, fps_};
    video_->framerate = {fps_, 1};
    video_->bit_rate = settings.averageBitRate();
    video_->gop_size = settings.maxKeyFrameInterval();
    // libyuv converts with BT.601 at limited range; the file says so.
    video_->color_range = AVCOL_RANGE_MPEG;
    video_->colorspace = AVCOL_SPC_SMPTE170M;
    video_->color_primaries = AVCOL_PRI_BT709;
    video_->color_trc = AVCOL_TRC_IEC61966_2_1;
    video_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    // veryfast: about 100 fps at 1080p on two cores against 57 for medium,
    // already ~53 dB on screen content at these bit rates.
    av_opt_set(video_->priv_data, "preset", "veryfast", 0);
    if (hevc) {
        av_opt_set(video_->priv_data, "x265-params", "log-level=error", 0);
        // Common players open HEVC in MP4 only under this tag.
        video_->codec_tag = MKTAG('h', 'v', 'c', '1');
    } else {
        av_opt_set(video_->priv_data, "profile", "high", 0);
    }
    writerChecked(avcodec_open2(video_, encoder, nullptr));
    videoStream_ = avformat_new_stream(format_, nullptr);
    if (!videoStream_) throw std::bad_alloc();
    writerChecked(avcodec_parameters_from_context(videoStream_->codecpar, video_));
    videoStream_->time_base = video_->time_base;
    videoStream_->avg_frame_rate = {fps_, 1};
    if (hevc) videoStream_->codecpar->codec_tag = MKTAG('h', 'v', 'c', '1');
    pictures_ = std::make_unique<FramePool>(settings.width, settings.height);
}

void Mp4Writer::openAudio() {
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!encoder) throw ExportError(ExportError::Kind::writer);
    sound_ = avcodec_alloc_context3(encoder);
    if (!sound_) throw std::bad_alloc();
    sound_->sample_fmt = AV_SAMPLE_FMT_FLTP;
    sound_->sample_rate = sampleRate;
    av_channel_layout_default(&sound_->ch_layout, 2);
    sound_->bit_rate = 192000;
    sound_->time_base = {1, sampleRate};
    sound_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    writerChecked(avcodec_open2(sound_, encoder, nullptr));
    audioStream_ = avformat_new_stream(format_, nullptr);
    if (!audioStream_) throw std::bad_alloc();
    writerChecked(avcodec_parameters_from_context(audioStream_->codecpar, sound_));
    audioStream_->time_base = sound_->time_base;

    soundFrame_ = av_frame_alloc();
    if (!soundFrame_) throw std::bad_alloc();
    soundFrame_->format = AV_SAMPLE_FMT_FLTP;
    soundFrame_->sample_rate = sampleRate;
    soundFrame_->nb_samples = sound_->frame_size;
    av_channel_layout_copy(&soundFrame_->ch_layout, &sound_->ch_layout);
    writerChecked(av_frame_get_buffer(soundFrame_, 0));
    interleaved_ = std::make_unique<float[]>(std::size_t(sound_->frame_size) * 2);
}

void Mp4Writer::appendPicture(const std::uint8_t* bgra, int stride) {
    if (nextPicture_ >= frameCount_) return;
    std::shared_ptr<AVFrame> picture = pictures_->take();
    // libyuv's "ARGB" is B, G, R, A in memory: our BGRA.
    libyuv::ARGBToI420(bgra, stride, picture->data[0], picture->linesize[0], picture->data[1], picture->linesize[1],
                       picture->data[2], picture->linesize[2], picture->width, picture->height);
    picture->pts = nextPicture_;
    picture->color_range = AVCOL_RANGE_MPEG;
    picture->colorspace = AVCOL_SPC_SMPTE170M;
    ++nextPicture_;
    drain(video_, videoStream_, picture.get());
    // Sound up to a second past this picture, never past the last one.
    if (sound_) encodeAudioUntil(std::min(audioEnd_, samplesAt(nextPicture_ - 1, fps_) + std::int64_t(audioLead * sampleRate)));
}

void Mp4Writer::encodeAudioUntil(std::int64_t sampleEnd) {
    int size = sound_->frame_size;
    while (nextSample_ < sampleEnd) {
        int count = int(std::min<std::int64_t>(size, audioEnd_ - nextSample_));
        if (count <= 0) break;
        audio_(nextSample_, interleaved_.get(), count);
        writerChecked(av_frame_make_writable(soundFrame_));
        auto* left = reinterpret_cast<float*>(soundFrame_->data[0]);
        auto* right = reinterpret_cast<float*>(soundFrame_->data[1]);
        for (int i = 0; i < count; ++i) {
            left[i] = interleaved_[2 * i];
            right[i] = interleaved_[2 * i + 1];
        }
        // Only the encoder's last frame may be short: the sound is cut there.
        soundFrame_->nb_samples = count;
        soundFrame_->pts = nextSample_;
        nextSample_ += count;
        drain(sound_, audioStream_, soundFrame_);
    }
}

void Mp4Writer::drain(AVCodecContext* codec, AVStream* stream, AVFrame* frame) {
    writerChecked(avcodec_send_frame(codec, frame));
    for (;;) {
        int received = avcodec_receive_packet(codec, packet_);
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) return;
        writerChecked(received);
        if (codec == video_ && packet_->duration == 0) packet_->duration = 1;
        av_packet_rescale_ts(packet_, codec->time_base, stream->time_base);
        packet_->stream_index = stream->index;
        writerChecked(av_interleaved_write_frame(format_, packet_));
    }
}

void Mp4Writer::finish() {
    if (finished_) return;
    if (sound_) {
        encodeAudioUntil(audioEnd_);
        drain(sound_, audioStream_, nullptr);
    }
    drain(video_, videoStream_, nullptr);
    writerChecked(av_write_trailer(format_));
    finished_ = true;
    closeFile();
}

void Mp4Writer::closeFile() {
    if (format_ && format_->pb) avio_closep(&format_->pb);
    avformat_free_context(format_);
    format_ = nullptr;
    avcodec_free_context(&video_);
    avcodec_free_context(&sound_);
    av_frame_free(&soundFrame_);
    av_packet_free(&packet_);
    pictures_.reset();
}

} // namespace recorder
