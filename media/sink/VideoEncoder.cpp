#include "sink/VideoEncoder.h"

#include "sink/FFmpegCall.h"
#include "sink/PacketDrain.h"

#include <libyuv.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

namespace recorder {

namespace {

const AVCodec* findEncoder(VideoCodec codec) {
    const char* name = codec == VideoCodec::h264 ? "libx264" : "libx265";
    const AVCodec* found = avcodec_find_encoder_by_name(name);
    if (!found) throw std::runtime_error(std::string("the encoder ") + name + " is missing from this FFmpeg");
    return found;
}

// libyuv's conversion is BT.601 with limited range; say so in the file so
// that readers turn it back into the same colours.
void tagColours(AVCodecContext& codec) {
    codec.color_range = AVCOL_RANGE_MPEG;
    codec.colorspace = AVCOL_SPC_SMPTE170M;
    codec.color_primaries = AVCOL_PRI_BT709;
    codec.color_trc = AVCOL_TRC_IEC61966_2_1;
}

} // namespace

VideoEncoder::VideoEncoder(Settings settings) : settings_(settings) {}

VideoEncoder::~VideoEncoder() { avcodec_free_context(&codec_); }

void VideoEncoder::open(const AVFormatContext& format, AVStream& stream) {
    const AVCodec* encoder = findEncoder(settings_.codec);
    codec_ = avcodec_alloc_context3(encoder);
    if (!codec_) throw std::bad_alloc();
    codec_->width = settings_.width;
    codec_->height = settings_.height;
    codec_->pix_fmt = AV_PIX_FMT_YUV420P;
    codec_->time_base = timeBase();
    codec_->framerate = {settings_.fps, 1};
    codec_->bit_rate = settings_.averageBitRate;
    codec_->gop_size = settings_.maxKeyFrameInterval;
    codec_->max_b_frames = settings_.allowFrameReordering ? 2 : 0;
    tagColours(*codec_);
    if (format.oformat->flags & AVFMT_GLOBALHEADER) codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    // veryfast kept every frame of 1080p60 on two cores; slower presets did not.
    av_opt_set(codec_->priv_data, "preset", "veryfast", 0);
    if (settings_.codec == VideoCodec::h264) {
        av_opt_set(codec_->priv_data, "profile", "high", 0);
        // No look-ahead, threads working on slices of one picture rather than
        // on several pictures, and rate control that counts pictures at the
        // frame rate instead of waiting for the next timestamp: each picture
        // comes out as soon as it went in, so nothing a crash could lose is
        // stuck inside the encoder. It cost no CPU at this preset. The
        // timestamps themselves pass through unchanged.
        av_opt_set(codec_->priv_data, "x264-params", "rc-lookahead=0:sync-lookahead=0:sliced-threads=1:force-cfr=1", 0);
    } else {
        av_opt_set(codec_->priv_data, "x265-params", settings_.allowFrameReordering ? "log-level=error" : "bframes=0:log-level=error", 0);
        codec_->codec_tag = MKTAG('h', 'v', 'c', '1');
    }
    checked(avcodec_open2(codec_, encoder, nullptr), "opening the video encoder");
    checked(avcodec_parameters_from_context(stream.codecpar, codec_), "describing the video stream");
    stream.time_base = codec_->time_base;
    stream.avg_frame_rate = codec_->framerate;
    picture_ = MediaSample::makeVideoFrame(AV_PIX_FMT_YUV420P, settings_.width, settings_.height);
}

const AVFrame& VideoEncoder::toEncoderPicture(const AVFrame& in) {
    bool sameSize = in.width == settings_.width && in.height == settings_.height;
    if (in.format == AV_PIX_FMT_YUV420P && sameSize) return in;
    checked(av_frame_make_writable(picture_.get()), "reusing the picture buffer");
    AVFrame* out = picture_.get();
    const AVFrame* planar = &in;
    if (in.format == AV_PIX_FMT_BGRA) {
        if (sameSize) {
            libyuv::ARGBToI420(in.data[0], in.linesize[0], out->data[0], out->linesize[0], out->data[1], out->linesize[1],
                               out->data[2], out->linesize[2], in.width, in.height);
            return *out;
        }
        if (!unscaled_ || unscaled_->width != in.width || unscaled_->height != in.height)
            unscaled_ = MediaSample::makeVideoFrame(AV_PIX_FMT_YUV420P, in.width, in.height);
        libyuv::ARGBToI420(in.data[0], in.linesize[0], unscaled_->data[0], unscaled_->linesize[0], unscaled_->data[1],
                           unscaled_->linesize[1], unscaled_->data[2], unscaled_->linesize[2], in.width, in.height);
        planar = unscaled_.get();
    } else if (in.format != AV_PIX_FMT_YUV420P) {
        throw std::runtime_error("a picture came in a format the recorder does not write");
    }
    // A window that changed size mid-recording: fill the file's size with it.
    libyuv::I420Scale(planar->data[0], planar->linesize[0], planar->data[1], planar->linesize[1], planar->data[2],
                      planar->linesize[2], planar->width, planar->height, out->data[0], out->linesize[0], out->data[1],
                      out->linesize[1], out->data[2], out->linesize[2], out->width, out->height, libyuv::kFilterBilinear);
    return *out;
}

void VideoEncoder::encode(const MediaSample& sample, std::int64_t sessionStart, const Emit& emit) {
    const AVFrame& picture = toEncoderPicture(sample.frame());
    send(picture, *sample.presentationTime(), sessionStart, emit);
}

void VideoEncoder::repeat(std::int64_t presentationTime, std::int64_t sessionStart, const Emit& emit) {
    if (last_) send(*last_, presentationTime, sessionStart, emit);
}

void VideoEncoder::send(const AVFrame& picture, std::int64_t presentationTime, std::int64_t sessionStart,
                        const Emit& emit) {
    AVFrame* frame = av_frame_clone(&picture);
    if (!frame) throw std::bad_alloc();
    if (&picture != last_.get()) {
        AVFrame* kept = av_frame_clone(&picture);
        if (!kept) throw std::bad_alloc();
        last_ = std::shared_ptr<const AVFrame>(kept, [](const AVFrame* f) {
            auto* owned = const_cast<AVFrame*>(f);
            av_frame_free(&owned);
        });
    }
    std::int64_t pts = av_rescale(presentationTime - sessionStart, timeBase().den, 1'000'000'000);
    // Two arrivals within one tick of the time base must still rise.
    frame->pts = std::max(pts, lastPts_ + 1);
    lastPts_ = frame->pts;
    int sent = avcodec_send_frame(codec_, frame);
    av_frame_free(&frame);
    checked(sent, "encoding a picture");
    receive(emit);
}

void VideoEncoder::flush(const Emit& emit) {
    checked(avcodec_send_frame(codec_, nullptr), "finishing the video");
    receive(emit);
}

void VideoEncoder::receive(const Emit& emit) { drainPackets(codec_, emit, "encoding a picture"); }

} // namespace recorder
