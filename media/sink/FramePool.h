#pragma once

#include <memory>

extern "C" {
#include <libavutil/buffer.h>
#include <libavutil/frame.h>
}

namespace recorder {

// I420 pictures of one size whose memory is reused once every holder has
// let go, so a capture running at 60 frames a second doesn't map and unmap
// megabytes each time.
class FramePool {
public:
    FramePool(int width, int height);
    ~FramePool();
    FramePool(const FramePool&) = delete;
    FramePool& operator=(const FramePool&) = delete;

    std::shared_ptr<AVFrame> take();
    int width() const { return width_; }
    int height() const { return height_; }

private:
    int width_;
    int height_;
    int strides_[3];
    int sizes_[3];
    AVBufferPool* pool_;
};

} // namespace recorder
