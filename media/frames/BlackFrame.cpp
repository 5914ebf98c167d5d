#include "frames/BlackFrame.h"

namespace recorder::BlackFrame {

namespace {

template <class PointIsBlack>
bool everyGridPointIs(const FrameImage& image, PointIsBlack pointIsBlack) {
    if (image.isNull()) return false;
    for (int j = 1; j < 16; j += 2) {
        const std::uint8_t* row = image.row(image.height() * j / 16);
        for (int i = 1; i < 16; i += 2)
            if (!pointIsBlack(row + std::ptrdiff_t(image.width() * i / 16) * 4)) return false;
    }
    return true;
}

} // namespace

bool imageIsBlack(const FrameImage& image) {
    return everyGridPointIs(image, [](const std::uint8_t* p) {
        return (p[0] == 0) + (p[1] == 0) + (p[2] == 0) + (p[3] == 0) >= 3;
    });
}

bool bufferIsBlack(const FrameImage& image) {
    return everyGridPointIs(image, [](const std::uint8_t* p) { return p[0] == 0 && p[1] == 0 && p[2] == 0; });
}

} // namespace recorder::BlackFrame
