#include "effects/GaussianBlur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace recorder::GaussianBlur {

namespace {

// Radii of three box blurs whose sequence has the given deviation.
std::array<int, 3> boxRadii(double sigma) {
    constexpr int n = 3;
    double ideal = std::sqrt(12 * sigma * sigma / n + 1);
    int lower = int(std::floor(ideal));
    if (lower % 2 == 0) --lower;
    int upper = lower + 2;
    double mIdeal = (12 * sigma * sigma - n * lower * lower - 4 * n * lower - 3 * n) / (-4.0 * lower - 4);
    int m = int(std::lround(mIdeal));
    std::array<int, 3> radii{};
    for (int i = 0; i < n; ++i) radii[std::size_t(i)] = ((i < m ? lower : upper) - 1) / 2;
    return radii;
}

struct Plane {
    std::uint8_t* data;
    int width;
    int height;
    qsizetype stride;
    int channels;
};

std::uint8_t divided(std::uint32_t sum, std::uint64_t reciprocal) {
    return std::uint8_t((sum * reciprocal + (1u << 23)) >> 24);
}

void blurRows(const Plane& p, int r, std::vector<std::uint8_t>& copy) {
    const int c = p.channels;
    const std::uint64_t reciprocal = (std::uint64_t(1) << 24) / std::uint64_t(2 * r + 1);
    copy.resize(std::size_t(p.width) * std::size_t(c));
    for (int y = 0; y < p.height; ++y) {
        std::uint8_t* row = p.data + y * p.stride;
        std::copy(row, row + p.width * c, copy.begin());
        auto at = [&](int x, int k) { return copy[std::size_t(std::clamp(x, 0, p.width - 1) * c + k)]; };
        for (int k = 0; k < c; ++k) {
            std::uint32_t sum = 0;
            for (int x = -r; x <= r; ++x) sum += at(x, k);
            for (int x = 0; x < p.width; ++x) {
                row[x * c + k] = divided(sum, reciprocal);
                sum += at(x + r + 1, k);
                sum -= at(x - r, k);
            }
        }
    }
}

// Row by row with a running sum per column, so memory is read in order.
void blurColumns(const Plane& p, int r, std::vector<std::uint8_t>& copy) {
    const std::size_t rowBytes = std::size_t(p.width) * std::size_t(p.channels);
    const std::uint64_t reciprocal = (std::uint64_t(1) << 24) / std::uint64_t(2 * r + 1);
    copy.resize(rowBytes * std::size_t(p.height));
    for (int y = 0; y < p.height; ++y) std::copy_n(p.data + y * p.stride, rowBytes, copy.begin() + std::ptrdiff_t(y * rowBytes));
    auto row = [&](int y) { return copy.data() + std::size_t(std::clamp(y, 0, p.height - 1)) * rowBytes; };
    std::vector<std::uint32_t> sums(rowBytes, 0);
    for (int y = -r; y <= r; ++y)
        for (std::size_t i = 0; i < rowBytes; ++i) sums[i] += row(y)[i];
    for (int y = 0; y < p.height; ++y) {
        std::uint8_t* out = p.data + y * p.stride;
        const std::uint8_t* entering = row(y + r + 1);
        const std::uint8_t* leaving = row(y - r);
        for (std::size_t i = 0; i < rowBytes; ++i) {
            out[i] = divided(sums[i], reciprocal);
            sums[i] += entering[i];
            sums[i] -= leaving[i];
        }
    }
}

} // namespace

void blur(QImage& image, double sigma) {
    if (!(sigma > 0.2) || image.isNull()) return;
    bool alphaOnly = image.format() == QImage::Format_Alpha8;
    if (!alphaOnly && image.format() != QImage::Format_ARGB32_Premultiplied)
        image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    Plane plane{image.bits(), image.width(), image.height(), image.bytesPerLine(), alphaOnly ? 1 : 4};
    std::vector<std::uint8_t> copy;
    for (int r : boxRadii(sigma)) {
        if (r <= 0) continue;
        blurRows(plane, r, copy);
        blurColumns(plane, r, copy);
    }
}

} // namespace recorder::GaussianBlur
