#pragma once

#include "frames/FrameImage.h"

struct AVFrame;
struct SwsContext;

namespace recorder {

// Turns decoded frames into the compositor's format in one pass: libyuv for
// the YUV layouts that video uses, libswscale for everything else; then the
// file's rotation, so the picture stands as it was filmed.
class FrameConverter {
public:
    FrameConverter() = default;
    ~FrameConverter();
    FrameConverter(const FrameConverter&) = delete;
    FrameConverter& operator=(const FrameConverter&) = delete;

    // Clockwise quarter turns the file asks for: 0, 90, 180 or 270.
    void setRotation(int rotation) { rotation_ = rotation; }
    // A null image for a frame of no size or a format nothing converts.
    FrameImage convert(const AVFrame& frame);

private:
    FrameImage convertUpright(const AVFrame& frame);
    FrameImage convertWithSwscale(const AVFrame& frame);
    FrameImage rotated(const FrameImage& image) const;

    int rotation_ = 0;
    SwsContext* sws_ = nullptr;
};

} // namespace recorder
