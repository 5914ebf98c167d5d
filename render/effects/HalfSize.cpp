#include "effects/HalfSize.h"

#include "effects/ByteRows.h"
#include "effects/PackedPixel.h"

#include <algorithm>
#include <cstring>
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

using Bytes16 = std::uint8_t __attribute__((vector_size(16)));
using Words8 = std::uint16_t __attribute__((vector_size(16)));

Words8 lowWords(Bytes16 p) {
    return Words8(__builtin_shufflevector(p, Bytes16{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
Words8 highWords(Bytes16 p) {
    return Words8(__builtin_shufflevector(p, Bytes16{}, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}

// Four pixels of two rows become two: each the rounded mean of a 2×2 block.
void shrinkFour(const std::uint32_t* a, const std::uint32_t* b, std::uint32_t* out) {
    Bytes16 top, bottom;
    std::memcpy(&top, a, 16);
    std::memcpy(&bottom, b, 16);
    Words8 left = lowWords(top) + lowWords(bottom), right = highWords(top) + highWords(bottom);
    Words8 sums = __builtin_shufflevector(left, right, 0, 1, 2, 3, 8, 9, 10, 11) +
                  __builtin_shufflevector(left, right, 4, 5, 6, 7, 12, 13, 14, 15) + Words8{2, 2, 2, 2, 2, 2, 2, 2};
    sums >>= 2;
    Bytes16 packed = Bytes16(sums);
    std::uint8_t bytes[8];
    for (int i = 0; i < 8; ++i) bytes[i] = packed[2 * i];
    std::memcpy(out, bytes, 8);
}

} // namespace

QImage shrink(const QImage& image) {
    int w = image.width(), h = image.height();
    QImage half((w + 1) / 2, (h + 1) / 2, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < half.height(); ++y) {
        const std::uint32_t* a = row(image, 2 * y);
        const std::uint32_t* b = row(image, std::min(2 * y + 1, h - 1));
        auto* out = reinterpret_cast<std::uint32_t*>(half.scanLine(y));
        int pairs = w / 2, x = 0;
        for (; x + 2 <= pairs; x += 2) shrinkFour(a + 2 * x, b + 2 * x, out + x);
        for (; x < pairs; ++x) out[x] = PackedPixel::mean4(a[2 * x], a[2 * x + 1], b[2 * x], b[2 * x + 1]);
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
