#include "sink/FramePool.h"

#include <new>

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace recorder {

namespace {

int aligned(int value) { return (value + 63) & ~63; }

} // namespace

FramePool::FramePool(int width, int height) : width_(width), height_(height) {
    int chromaWidth = (width + 1) / 2;
    int chromaHeight = (height + 1) / 2;
    strides_[0] = aligned(width);
    strides_[1] = strides_[2] = aligned(chromaWidth);
    sizes_[0] = strides_[0] * height;
    sizes_[1] = sizes_[2] = strides_[1] * chromaHeight;
    // The pool itself lives on until the last picture taken from it is gone.
    pool_ = av_buffer_pool_init(std::size_t(sizes_[0] + sizes_[1] + sizes_[2] + 64), nullptr);
    if (!pool_) throw std::bad_alloc();
}

FramePool::~FramePool() { av_buffer_pool_uninit(&pool_); }

std::shared_ptr<AVFrame> FramePool::take() {
    AVFrame* frame = av_frame_alloc();
    if (!frame) throw std::bad_alloc();
    std::shared_ptr<AVFrame> owned(frame, [](AVFrame* f) { av_frame_free(&f); });
    frame->buf[0] = av_buffer_pool_get(pool_);
    if (!frame->buf[0]) throw std::bad_alloc();
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width_;
    frame->height = height_;
    std::uint8_t* base = reinterpret_cast<std::uint8_t*>((reinterpret_cast<std::uintptr_t>(frame->buf[0]->data) + 63) & ~std::uintptr_t(63));
    for (int plane = 0; plane < 3; ++plane) {
        frame->data[plane] = base;
        frame->linesize[plane] = strides_[plane];
        base += sizes_[plane];
    }
    return owned;
}

} // namespace recorder
