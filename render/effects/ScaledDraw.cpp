#include "effects/ScaledDraw.h"

#include "effects/AxisTaps.h"
#include "effects/PackedPixel.h"

#include <QRectF>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace recorder::ScaledDraw {

namespace {

// Portable vectors (GCC and Clang): SSE2 on x86-64, NEON on ARM.
using Bytes16 = std::uint8_t __attribute__((vector_size(16)));
using Bytes8 = std::uint8_t __attribute__((vector_size(8)));
using Words8 = std::uint16_t __attribute__((vector_size(16)));

// Four taps of one output pixel: two source pixels' weights per vector.
struct TapWeights {
    Words8 first;
    Words8 second;
};

template <int Count>
void weighRows(const std::uint8_t* const* rows, const std::uint16_t* w, std::uint8_t* out,
                                     std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) {
        std::uint16_t sum = 128;
        for (int k = 0; k < Count; ++k) sum = std::uint16_t(sum + rows[k][i] * w[k]);
        out[i] = std::uint8_t(sum >> 8);
    }
}

// Source rows blended by one output row's weights, over the columns in use.
class RowBlender {
public:
    RowBlender(const QImage& source, int firstColumn, int columns)
        : source_(source), offset_(std::size_t(firstColumn) * 4), bytes_(std::size_t(columns) * 4),
          // Room past the end: the tap loads read 16 bytes at a time.
          line_(bytes_ + 64, 0) {}

    const std::uint8_t* blend(int firstRow, const std::uint16_t* weights, int count) {
        const std::uint8_t* rows[4];
        std::uint16_t w[4];
        int used = 0;
        for (int k = 0; k < count && used < 4; ++k) {
            if (weights[k] == 0) continue;
            rows[used] = source_.constScanLine(firstRow + k) + offset_;
            w[used++] = weights[k];
        }
        switch (used) {
        case 0: std::fill_n(line_.data(), bytes_, 0); break;
        case 1: weigh<1>(rows, w); break;
        case 2: weigh<2>(rows, w); break;
        case 3: weigh<3>(rows, w); break;
        default: weigh<4>(rows, w); break;
        }
        return line_.data();
    }

private:
    template <int Count>
    void weigh(const std::uint8_t* const* rows, const std::uint16_t* w) {
        if (Count == 1 && w[0] == 256) std::memcpy(line_.data(), rows[0], bytes_);
        else weighRows<Count>(rows, w, line_.data(), bytes_);
    }

    const QImage& source_;
    std::size_t offset_;
    std::size_t bytes_;
    std::vector<std::uint8_t> line_;
};

// Bytes widened to words by interleaving them with zeros (one unpack).
inline Words8 lowWords(Bytes16 p) {
    return Words8(__builtin_shufflevector(p, Bytes16{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
inline Words8 highWords(Bytes16 p) {
    return Words8(__builtin_shufflevector(p, Bytes16{}, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}

inline Words8 tapSums(const std::uint8_t* at, const TapWeights& w) {
    Bytes16 p;
    std::memcpy(&p, at, 16);
    return lowWords(p) * w.first + highWords(p) * w.second;
}

// Four output pixels of one row, each from its own four taps, packed into
// 16 bytes: no pixel leaves the vector registers on its own.
inline Bytes16 weightedQuad(const std::uint8_t* line, const int* offsets, const TapWeights* w) {
    Words8 a = tapSums(line + offsets[0], w[0]), b = tapSums(line + offsets[1], w[1]);
    Words8 c = tapSums(line + offsets[2], w[2]), d = tapSums(line + offsets[3], w[3]);
    const Words8 half = {128, 128, 128, 128, 128, 128, 128, 128};
    // Lanes 0-3 of a sum hold its first two taps, 4-7 the other two.
    Words8 ab = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11) +
                __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15) + half;
    Words8 cd = __builtin_shufflevector(c, d, 0, 1, 2, 3, 8, 9, 10, 11) +
                __builtin_shufflevector(c, d, 4, 5, 6, 7, 12, 13, 14, 15) + half;
    ab >>= 8;
    cd >>= 8;
    using Words16 = std::uint16_t __attribute__((vector_size(32)));
    Words16 all = __builtin_shufflevector(ab, cd, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    return __builtin_convertvector(all, Bytes16);
}

// The weighted sum of up to 4·groups consecutive pixels from `line`.
template <int Groups>
std::uint32_t weighted(const std::uint8_t* line, const TapWeights* weights) {
    Words8 sum = {128, 128, 128, 128, 0, 0, 0, 0};
    for (int g = 0; g < Groups; ++g) sum += tapSums(line + 16 * g, weights[g]);
    sum += __builtin_shufflevector(sum, sum, 4, 5, 6, 7, 0, 1, 2, 3);
    sum >>= 8;
    Bytes8 packed = __builtin_convertvector(sum, Bytes8);
    std::uint32_t pixel;
    std::memcpy(&pixel, &packed, 4);
    return pixel;
}

// The columns' weights laid out for the vector loop, `groups` of four a pixel.
std::vector<TapWeights> vectorWeights(const AxisTaps& columns, int groups) {
    std::vector<TapWeights> out;
    for (std::size_t i = 0; i < columns.first.size(); ++i) {
        std::uint16_t w[8]{};
        for (int k = 0; k < columns.count; ++k) w[k] = columns.weights[i * std::size_t(columns.count) + std::size_t(k)];
        for (int g = 0; g < groups; ++g) {
            const std::uint16_t* v = w + 4 * g;
            out.push_back({Words8{v[0], v[0], v[0], v[0], v[1], v[1], v[1], v[1]},
                           Words8{v[2], v[2], v[2], v[2], v[3], v[3], v[3], v[3]}});
        }
    }
    return out;
}

// Rounded corners: in the corner squares the coverage comes from the
// distance to the arc, replacing the straight edges' own.
class Corners {
public:
    Corners(const QRectF& rect, double radius)
        : rect_(rect), radius_(std::clamp(radius, 0.0, std::min(rect.width(), rect.height()) / 2)) {}

    bool touchesRow(int y) const {
        return radius_ > 0 && ((y + 1 > rect_.top() && y < rect_.top() + radius_) ||
                               (y + 1 > rect_.bottom() - radius_ && y < rect_.bottom()));
    }

    // The factor for the pixel's colour, 0 to 256.
    std::uint32_t factor(int x, int y, double edgeCoverage) const {
        double px = x + 0.5, py = y + 0.5;
        bool left = px < rect_.left() + radius_, top = py < rect_.top() + radius_;
        bool inCorner = (left || px > rect_.right() - radius_) && (top || py > rect_.bottom() - radius_);
        if (!inCorner || edgeCoverage <= 0) return 256;
        double cx = left ? rect_.left() + radius_ : rect_.right() - radius_;
        double cy = top ? rect_.top() + radius_ : rect_.bottom() - radius_;
        double arc = std::clamp(radius_ - std::hypot(px - cx, py - cy) + 0.5, 0.0, 1.0);
        return std::uint32_t(std::lround(std::min(arc / edgeCoverage, 1.0) * 256));
    }

private:
    QRectF rect_;
    double radius_;
};

double coverage(const AxisTaps& axis, std::size_t i) {
    int sum = 0;
    for (int k = 0; k < axis.count; ++k) sum += axis.weights[i * std::size_t(axis.count) + std::size_t(k)];
    return sum / 256.0;
}

inline void put(std::uint32_t p, std::uint32_t& out) {
    std::uint32_t alpha = p >> 24;
    if (alpha == 255) out = p;
    else if (alpha) out = PackedPixel::over(p, out);
}

class RowDrawer {
public:
    RowDrawer(QImage& target, const QImage& source, const AxisTaps& columns, const AxisTaps& rows,
              const Corners& corners, int groups)
        : target_(target), columns_(columns), rows_(rows), corners_(corners), groups_(groups),
          firstColumn_(columns.lowestSource()),
          blender_(source, firstColumn_, columns.highestSource() - firstColumn_ + 1),
          weights_(vectorWeights(columns, groups)) {
        for (std::size_t i = 0; i < columns.first.size(); ++i) {
            offsets_.push_back(4 * (columns.first[i] - firstColumn_));
            columnCoverage_.push_back(coverage(columns, i));
        }
    }

    void drawAll() {
        for (int y = rows_.outputStart; y < rows_.outputEnd; ++y) {
            if (groups_ == 1 && !corners_.touchesRow(y)) drawQuads(y);
            else drawRow(y);
        }
    }

private:
    const std::uint8_t* line(int y) {
        std::size_t j = std::size_t(y - rows_.outputStart);
        return blender_.blend(rows_.first[j], rows_.weights.data() + j * std::size_t(rows_.count), rows_.count);
    }

    std::uint32_t* out(int y) { return reinterpret_cast<std::uint32_t*>(target_.scanLine(y)) + columns_.outputStart; }

    void drawQuads(int y) {
        const std::uint8_t* a = line(y);
        std::uint32_t* o = out(y);
        const int n = columns_.outputEnd - columns_.outputStart;
        int i = 0;
        for (; i + 4 <= n; i += 4) {
            Bytes16 quad = weightedQuad(a, &offsets_[std::size_t(i)], &weights_[std::size_t(i)]);
            std::uint64_t halves[2];
            std::memcpy(halves, &quad, 16);
            constexpr std::uint64_t alphas = 0xFF000000FF000000;
            if ((halves[0] & halves[1] & alphas) == alphas) {
                std::memcpy(o + i, halves, 16);
            } else {
                std::uint32_t p[4];
                std::memcpy(p, halves, 16);
                for (int k = 0; k < 4; ++k) put(p[k], o[i + k]);
            }
        }
        for (; i < n; ++i) put(weighted<1>(a + offsets_[std::size_t(i)], &weights_[std::size_t(i)]), o[i]);
    }

    void drawRow(int y) {
        const std::uint8_t* a = line(y);
        std::uint32_t* o = out(y);
        bool corner = corners_.touchesRow(y);
        double rowCoverage = coverage(rows_, std::size_t(y - rows_.outputStart));
        const int n = columns_.outputEnd - columns_.outputStart;
        for (int i = 0; i < n; ++i) {
            const std::uint8_t* at = a + offsets_[std::size_t(i)];
            const TapWeights* w = &weights_[std::size_t(i * groups_)];
            std::uint32_t p = groups_ == 1 ? weighted<1>(at, w) : weighted<2>(at, w);
            if (corner)
                p = PackedPixel::mix(0, p, corners_.factor(columns_.outputStart + i, y, columnCoverage_[std::size_t(i)] * rowCoverage));
            put(p, o[i]);
        }
    }

    QImage& target_;
    const AxisTaps& columns_;
    const AxisTaps& rows_;
    const Corners& corners_;
    int groups_;
    int firstColumn_;
    RowBlender blender_;
    std::vector<TapWeights> weights_;
    std::vector<int> offsets_;
    std::vector<double> columnCoverage_;
};

} // namespace

void draw(QImage& target, const QImage& source, double scaleX, double scaleY, double dx, double dy, double radius) {
    if (source.isNull() || target.isNull()) return;
    AxisTaps columns = AxisTaps::make(scaleX, dx, source.width(), target.width());
    AxisTaps rows = AxisTaps::make(scaleY, dy, source.height(), target.height());
    if (columns.empty() || rows.empty() || columns.count > 8) return;
    Corners corners(QRectF(dx, dy, scaleX * source.width(), scaleY * source.height()), radius);
    RowDrawer(target, source, columns, rows, corners, columns.count <= 4 ? 1 : 2).drawAll();
}

} // namespace recorder::ScaledDraw
