#include "effects/AxisTaps.h"

#include <algorithm>
#include <cmath>

namespace recorder {

namespace {

struct Tap {
    int index;
    double weight;
};

// The share of the output pixel [x, x + 1) that the picture covers.
double coverage(int x, double start, double end) { return std::max(0.0, std::min(x + 1.0, end) - std::max(double(x), start)); }

// Every source pixel under a window centred on the output pixel, weighed by
// overlap; together they weigh the share of the output pixel covered.
std::vector<Tap> areaTaps(int x, double scale, double offset, int length, double window) {
    double centre = (x + 0.5 - offset) / scale;
    double a = std::max(centre - window / 2, 0.0), b = std::min(centre + window / 2, double(length));
    std::vector<Tap> taps;
    double sum = 0;
    for (int i = int(std::floor(a)); i < b && i < length; ++i) {
        double overlap = std::min(b, i + 1.0) - std::max(a, double(i));
        if (overlap <= 0) continue;
        taps.push_back({i, overlap});
        sum += overlap;
    }
    double cover = coverage(x, offset, offset + scale * length);
    for (auto& t : taps) t.weight *= cover / sum;
    return taps;
}

std::vector<Tap> linearTaps(int x, double scale, double offset, int length) {
    double cover = coverage(x, offset, offset + scale * length);
    if (length == 1) return {{0, cover}};
    double u = std::clamp((x + 0.5 - offset) / scale - 0.5, 0.0, double(length - 1));
    int i = std::min(int(u), length - 2);
    double f = u - i;
    return {{i, (1 - f) * cover}, {i + 1, f * cover}};
}

// Weights in 1/256 whose sum is exactly the rounded total, so a covered
// pixel of a flat picture keeps its value; placed in the window that
// starts at source index `start`.
void quantise(const std::vector<Tap>& taps, int start, std::uint16_t* window) {
    double total = 0;
    for (const auto& t : taps) total += t.weight;
    int target = int(std::lround(std::min(total, 1.0) * 256)), given = 0;
    for (std::size_t k = 0; k < taps.size(); ++k) {
        int w = k + 1 == taps.size() ? target - given : int(std::lround(taps[k].weight * 256));
        w = std::clamp(w, 0, target - given);
        window[taps[k].index - start] = std::uint16_t(w);
        given += w;
    }
}

} // namespace

AxisTaps AxisTaps::make(double scale, double offset, int length, int outputLength) {
    AxisTaps axis;
    if (!(scale > 0) || length <= 0) return axis;
    axis.outputStart = std::max(0, int(std::floor(offset)));
    axis.outputEnd = std::min(outputLength, int(std::ceil(offset + scale * length)));
    if (axis.empty()) return axis;
    std::vector<std::vector<Tap>> all;
    for (int x = axis.outputStart; x < axis.outputEnd; ++x) {
        if (scale >= 1) all.push_back(linearTaps(x, scale, offset, length));
        else all.push_back(areaTaps(x, scale, offset, length, scale < widenBelow ? std::max(1 / scale, 2.0) : 1 / scale));
        axis.count = std::max(axis.count, int(all.back().size()));
    }
    if (axis.count == 0) {
        axis.outputEnd = axis.outputStart;
        return axis;
    }
    axis.weights.assign(all.size() * std::size_t(axis.count), 0);
    for (std::size_t i = 0; i < all.size(); ++i) {
        // Every window lies inside the picture, so reading it is always safe.
        int start = std::min(all[i].empty() ? 0 : all[i].front().index, length - axis.count);
        axis.first.push_back(start);
        quantise(all[i], start, axis.weights.data() + i * std::size_t(axis.count));
    }
    return axis;
}

int AxisTaps::lowestSource() const { return first.empty() ? 0 : *std::min_element(first.begin(), first.end()); }

int AxisTaps::highestSource() const {
    return first.empty() ? 0 : *std::max_element(first.begin(), first.end()) + count - 1;
}

} // namespace recorder
