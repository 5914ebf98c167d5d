#include "decode/FrameConverter.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}
#include <libyuv/convert_argb.h>
#include <libyuv/planar_functions.h>
#include <libyuv/rotate_argb.h>

namespace recorder {

namespace {

bool isFullRange(const AVFrame& f) {
    return f.color_range == AVCOL_RANGE_JPEG || f.format == AV_PIX_FMT_YUVJ420P ||
           f.format == AV_PIX_FMT_YUVJ422P || f.format == AV_PIX_FMT_YUVJ444P;
}

// Unlabelled video is BT.709 from HD up and BT.601 below, as players assume.
const libyuv::YuvConstants* yuvConstants(const AVFrame& f) {
    bool full = isFullRange(f);
    switch (f.colorspace) {
    case AVCOL_SPC_BT709: return full ? &libyuv::kYuvF709Constants : &libyuv::kYuvH709Constants;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL: return full ? &libyuv::kYuvV2020Constants : &libyuv::kYuv2020Constants;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_FCC: return full ? &libyuv::kYuvJPEGConstants : &libyuv::kYuvI601Constants;
    default:
        if (f.height >= 720) return full ? &libyuv::kYuvF709Constants : &libyuv::kYuvH709Constants;
        return full ? &libyuv::kYuvJPEGConstants : &libyuv::kYuvI601Constants;
    }
}

bool hasAlpha(int format) {
    const AVPixFmtDescriptor* d = av_pix_fmt_desc_get(AVPixelFormat(format));
    return d && ((d->flags & AV_PIX_FMT_FLAG_ALPHA) || format == AV_PIX_FMT_PAL8);
}

} // namespace

FrameConverter::~FrameConverter() { sws_freeContext(sws_); }

FrameImage FrameConverter::convert(const AVFrame& frame) {
    FrameImage upright = convertUpright(frame);
    if (upright.isNull() || rotation_ == 0) return upright;
    return rotated(upright);
}

FrameImage FrameConverter::convertUpright(const AVFrame& f) {
    if (f.width <= 0 || f.height <= 0) return {};
    const libyuv::YuvConstants* yuv = yuvConstants(f);
    auto* const* p = f.data;
    const int* s = f.linesize;
    auto make = [&](bool opaque) { return FrameImage::allocate(f.width, f.height, opaque); };
    FrameImage out;
    int failed = 0;
    switch (f.format) {
    case AV_PIX_FMT_YUV420P:
    case AV_PIX_FMT_YUVJ420P:
        out = make(true);
        failed = libyuv::I420ToARGBMatrix(p[0], s[0], p[1], s[1], p[2], s[2], out.bits(), out.bytesPerLine(), yuv,
                                          f.width, f.height);
        break;
    case AV_PIX_FMT_YUV422P:
    case AV_PIX_FMT_YUVJ422P:
        out = make(true);
        failed = libyuv::I422ToARGBMatrix(p[0], s[0], p[1], s[1], p[2], s[2], out.bits(), out.bytesPerLine(), yuv,
                                          f.width, f.height);
        break;
    case AV_PIX_FMT_YUV444P:
    case AV_PIX_FMT_YUVJ444P:
        out = make(true);
        failed = libyuv::I444ToARGBMatrix(p[0], s[0], p[1], s[1], p[2], s[2], out.bits(), out.bytesPerLine(), yuv,
                                          f.width, f.height);
        break;
    case AV_PIX_FMT_NV12:
        out = make(true);
        failed = libyuv::NV12ToARGBMatrix(p[0], s[0], p[1], s[1], out.bits(), out.bytesPerLine(), yuv, f.width,
                                          f.height);
        break;
    case AV_PIX_FMT_YUVA420P:
        out = make(false);
        failed = libyuv::I420AlphaToARGBMatrix(p[0], s[0], p[1], s[1], p[2], s[2], p[3], s[3], out.bits(),
                                               out.bytesPerLine(), yuv, f.width, f.height, 1);
        break;
    case AV_PIX_FMT_BGRA:
        out = make(false);
        failed = libyuv::ARGBAttenuate(p[0], s[0], out.bits(), out.bytesPerLine(), f.width, f.height);
        break;
    default: return convertWithSwscale(f);
    }
    return failed ? FrameImage() : out;
}

FrameImage FrameConverter::convertWithSwscale(const AVFrame& f) {
    sws_ = sws_getCachedContext(sws_, f.width, f.height, AVPixelFormat(f.format), f.width, f.height,
                                AV_PIX_FMT_BGRA, SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr,
                                nullptr, nullptr);
    if (!sws_) return {};
    bool alpha = hasAlpha(f.format);
    FrameImage out = FrameImage::allocate(f.width, f.height, !alpha);
    std::uint8_t* dst[4] = {out.bits(), nullptr, nullptr, nullptr};
    int dstStride[4] = {out.bytesPerLine(), 0, 0, 0};
    if (sws_scale(sws_, f.data, f.linesize, 0, f.height, dst, dstStride) != f.height) return {};
    if (alpha) libyuv::ARGBAttenuate(out.bits(), out.bytesPerLine(), out.bits(), out.bytesPerLine(), f.width, f.height);
    return out;
}

FrameImage FrameConverter::rotated(const FrameImage& image) const {
    bool quarter = rotation_ == 90 || rotation_ == 270;
    FrameImage out = FrameImage::allocate(quarter ? image.height() : image.width(),
                                          quarter ? image.width() : image.height(), image.isOpaque());
    auto mode = rotation_ == 90 ? libyuv::kRotate90 : rotation_ == 180 ? libyuv::kRotate180 : libyuv::kRotate270;
    if (libyuv::ARGBRotate(image.data(), image.bytesPerLine(), out.bits(), out.bytesPerLine(), image.width(),
                           image.height(), mode))
        return image;
    return out;
}

} // namespace recorder
