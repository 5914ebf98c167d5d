#include "effects/HalfSize.h"

#include "effects/ByteRows.h"
#include "effects/PackedPixel.h"

#include <algorithm>
#include <vector>

namespace recorder::HalfSize {

namespace {

const std::uint32_t* row(const QImage& image, int y) {
    return reinterpret_cast<const std::uint32_t*>(image.constScanLine(y));
}

const std::uint8_t* bytes(const std::uint32_t* pixels) { return reinterpret_cast<const std::uint8_t*>(pixels); }

// One full-size row from a half-size row: each half pixel becomes two, a
// quarter of the way towards its left and its right neighbour.
void expandRow(const std::uint32_t* in, int halfWidth, std::uint32_t* leftward, std::uint32_t* rightward,
               std::uint32_t* out, int fullWidth) {
    auto* l = reinterpret_cast<std::uint8_t*>(leftward);
    auto* r = reinterpret_cast<std::uint8_t*>(rightward);
    std::copy_n(bytes(in), 4, l);
    if (halfWidth > 1) {
        ByteRows::mix(bytes(in + 1), bytes(in), 64, l + 4, 4 * (halfWidth - 1));
        ByteRows::mix(bytes(in), bytes(in + 1), 64, r, 4 * (halfWidth - 1));
    }
    std::copy_n(bytes(in + halfWidth - 1), 4, r + 4 * (halfWidth - 1));
    int pairs = fullWidth / 2;
    for (int i = 0; i < pairs; ++i) {
        out[2 * i] = leftward[i];
        out[2 * i + 1] = rightward[i];
    }
    if (fullWidth & 1) out[fullWidth - 1] = leftward[pairs];
}

} // namespace

QImage shrink(const QImage& image) {
    int w = image.width(), h = image.height();
    QImage half((w + 1) / 2, (h + 1) / 2, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < half.height(); ++y) {
        const std::uint32_t* a = row(image, 2 * y);
        const std::uint32_t* b = row(image, std::min(2 * y + 1, h - 1));
        auto* out = reinterpret_cast<std::uint32_t*>(half.scanLine(y));
        int pairs = w / 2;
        for (int x = 0; x < pairs; ++x) out[x] = PackedPixel::mean4(a[2 * x], a[2 * x + 1], b[2 * x], b[2 * x + 1]);
        if (w & 1) out[pairs] = PackedPixel::mean4(a[w - 1], a[w - 1], b[w - 1], b[w - 1]);
    }
    return half;
}

void expandInto(const QImage& half, QImage& full) {
    int halfWidth = half.width(), halfHeight = half.height();
    std::vector<std::uint32_t> blended(static_cast<std::size_t>(halfWidth)), leftward(blended.size()),
        rightward(blended.size());
    for (int y = 0; y < full.height(); ++y) {
        int i = std::min(y >> 1, halfHeight - 1);
        int neighbour = (y & 1) ? std::min(i + 1, halfHeight - 1) : std::max(i - 1, 0);
        ByteRows::mix(bytes(row(half, i)), bytes(row(half, neighbour)), 64,
                      reinterpret_cast<std::uint8_t*>(blended.data()), 4 * halfWidth);
        expandRow(blended.data(), halfWidth, leftward.data(), rightward.data(),
                  reinterpret_cast<std::uint32_t*>(full.scanLine(y)), full.width());
    }
}

} // namespace recorder::HalfSize
