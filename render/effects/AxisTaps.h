#pragma once

#include <cstdint>
#include <vector>

namespace recorder {

// The source pixels and weights behind each output pixel along one axis of
// a scale-and-shift map: area averaging where the picture shrinks, linear
// interpolation where it grows, and in both cases the share of the output
// pixel the picture covers, so its edges come out exactly soft.
struct AxisTaps {
    int outputStart = 0;
    int outputEnd = 0;
    // Taps per output pixel; every pixel has this many, unused ones weigh 0.
    int count = 0;
    // For output pixel outputStart + i: its first source index, then
    // `count` weights in 1/256 that add up to 256 times its coverage.
    std::vector<int> first;
    std::vector<std::uint16_t> weights;

    // Output pixel x = scale·u + offset for source coordinate u in [0, length),
    // limited to output pixels [0, outputLength). Below 0.75× each output
    // pixel averages at least two source pixels: a window of even width
    // wipes out 1-pixel stripes, which the pixel's own area would turn into
    // slow waves (moiré).
    static AxisTaps make(double scale, double offset, int length, int outputLength);

    static constexpr double widenBelow = 0.75;

    bool empty() const { return outputEnd <= outputStart; }
    int lowestSource() const;
    int highestSource() const;
};

} // namespace recorder
