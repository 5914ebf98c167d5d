#include "effects/MotionBlur.h"

#include "effects/ByteRows.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace recorder::MotionBlur {

namespace {

// Where a pass samples: a scale about a centre, then a shift.
struct SampleMap {
    double scale = 1;
    QPointF center;
    QPointF shift;

    bool isIdentity() const { return scale == 1 && shift.isNull(); }
    double x(double x) const { return center.x() + (x - center.x()) * scale + shift.x(); }
    double y(double y) const { return center.y() + (y - center.y()) * scale + shift.y(); }
};

// Enough doublings that neighbouring samples lie about a pixel apart.
int passesFor(double length) { return std::clamp(int(std::ceil(std::log2(length + 1))), 1, 6); }

class Resampler {
public:
    explicit Resampler(const QImage& in)
        : in_(in), width_(in.width()), height_(in.height()), blend_(std::size_t(in.width()) * 4) {}

    // Row y of the picture seen through `map`, bilinear, edges clamped. Along
    // a row the offset to the source changes slowly, so it is held constant
    // over short runs, which keeps each run one vector loop.
    const std::uint8_t* sampleRow(const SampleMap& map, int y, std::uint8_t* out) {
        if (map.isIdentity()) return row(y);
        const std::uint8_t* source = verticalBlend(map.y(y));
        // An eighth of a pixel of drift along a run is far below what a blur shows.
        double drift = std::fabs(map.scale - 1);
        int run = drift > 0 ? std::clamp(int(0.125 / drift), 1, width_) : width_;
        for (int x = 0; x < width_; x += run) {
            int n = std::min(run, width_ - x);
            double middle = x + (n - 1) * 0.5;
            double offset = map.x(middle) - middle;
            double whole = std::floor(offset);
            int d = int(whole);
            auto w = unsigned((offset - whole) * 256 + 0.5);
            if (w == 256) ++d, w = 0;
            if (x + d >= 0 && x + d + n < width_)
                ByteRows::mix(source + 4 * (x + d), source + 4 * (x + d + 1), w, out + 4 * x, 4 * n);
            else
                clampedRun(map, source, x, n, out);
        }
        return out;
    }

private:
    const std::uint8_t* row(int y) const { return in_.constScanLine(y); }

    const std::uint8_t* verticalBlend(double sy) {
        sy = std::clamp(sy, 0.0, double(height_ - 1));
        int y0 = int(sy);
        auto w = unsigned((sy - y0) * 256 + 0.5);
        if (w == 0) return row(y0);
        if (w == 256) return row(std::min(y0 + 1, height_ - 1));
        ByteRows::mix(row(y0), row(std::min(y0 + 1, height_ - 1)), w, blend_.data(), 4 * width_);
        return blend_.data();
    }

    // Near the edges: each pixel on its own, its samples kept inside.
    void clampedRun(const SampleMap& map, const std::uint8_t* source, int x, int n, std::uint8_t* out) const {
        for (int i = x; i < x + n; ++i) {
            double sx = std::clamp(map.x(i), 0.0, double(width_ - 1));
            int x0 = int(sx);
            int x1 = std::min(x0 + 1, width_ - 1);
            auto w = unsigned((sx - x0) * 256 + 0.5);
            ByteRows::mix(source + 4 * x0, source + 4 * x1, w, out + 4 * i, 4);
        }
    }

    const QImage& in_;
    int width_;
    int height_;
    std::vector<std::uint8_t> blend_;
};

// out = the mean of `in` seen through `a` and through `b`.
void pass(const QImage& in, QImage& out, const SampleMap& a, const SampleMap& b, bool roundUp) {
    Resampler first(in), second(in);
    std::vector<std::uint8_t> rowA(std::size_t(in.width()) * 4), rowB(rowA.size());
    for (int y = 0; y < in.height(); ++y)
        ByteRows::average(first.sampleRow(a, y, rowA.data()), second.sampleRow(b, y, rowB.data()), out.scanLine(y),
                          4 * in.width(), roundUp);
}

// Pass 0 with `firstA` and `firstB`; pass j with the identity and `later(j)`.
template <class Later>
void runPasses(QImage& image, int passes, const SampleMap& firstA, const SampleMap& firstB, Later later) {
    QImage scratch(image.size(), QImage::Format_ARGB32_Premultiplied);
    pass(image, scratch, firstA, firstB, false);
    for (int j = 1; j < passes; ++j) {
        std::swap(image, scratch);
        pass(image, scratch, SampleMap{1, {}, {}}, later(j), j % 2 == 1);
    }
    std::swap(image, scratch);
}

double farthestCorner(const QImage& image, QPointF c) {
    double dx = std::max(c.x(), image.width() - c.x()), dy = std::max(c.y(), image.height() - c.y());
    return std::hypot(dx, dy);
}

} // namespace

void zoom(QImage& image, QPointF center, double amount, double referenceDistance) {
    if (image.isNull() || !(amount > 0) || !(referenceDistance > 0)) return;
    double k = std::min(amount / referenceDistance, 1.0);
    int passes = passesFor(k * farthestCorner(image, center));
    double samples = std::exp2(passes);
    // Scales from 1 + k/2 down to 1 − k/2, evenly spaced in ratio.
    double beta = std::pow((1 - k / 2) / (1 + k / 2), 1 / (samples - 1));
    runPasses(image, passes, SampleMap{1 + k / 2, center, {}}, SampleMap{(1 + k / 2) * beta, center, {}},
              [&](int j) { return SampleMap{std::pow(beta, std::exp2(j)), center, {}}; });
}

void directional(QImage& image, double radius, QPointF direction) {
    double length = std::hypot(direction.x(), direction.y());
    if (image.isNull() || !(radius > 0) || !(length > 0)) return;
    QPointF unit = direction / length;
    int passes = passesFor(2 * radius);
    double spacing = 2 * radius / (std::exp2(passes) - 1);
    runPasses(image, passes, SampleMap{1, {}, -radius * unit}, SampleMap{1, {}, (spacing - radius) * unit},
              [&](int j) { return SampleMap{1, {}, std::exp2(j) * spacing * unit}; });
}

} // namespace recorder::MotionBlur
