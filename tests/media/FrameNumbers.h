#pragma once

#include "frames/FrameImage.h"

#include <cmath>
#include <optional>

namespace recorder::test {

// The number a frame of makeNumberedVideo carries (luma 19 + 3·N, so red
// 255/219·3·(N + 1) after conversion); -1 for a black frame, -2 for none.
inline int frameNumber(const std::optional<FrameImage>& image) {
    if (!image || image->isNull()) return -2;
    const std::uint8_t* centre = image->row(image->height() / 2) + (image->width() / 2) * 4;
    if (centre[2] == 0) return -1;
    return int(std::lround(centre[2] / (3 * 255.0 / 219.0))) - 1;
}

} // namespace recorder::test
