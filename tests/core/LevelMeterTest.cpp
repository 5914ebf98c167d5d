#include "audio/LevelMeter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace recorder {
namespace {

TEST(LevelMeter, ReadsZeroAtMinus50DecibelsAndOneAtFullScale) {
    EXPECT_FLOAT_EQ(LevelMeter::reading(std::pow(10.0, -50.0 / 20)), 0.0f);
    EXPECT_FLOAT_EQ(LevelMeter::reading(0), 0.0f);
    EXPECT_FLOAT_EQ(LevelMeter::reading(1), 1.0f);
    EXPECT_FLOAT_EQ(LevelMeter::reading(2), 1.0f);
    EXPECT_NEAR(LevelMeter::reading(std::pow(10.0, -20.0 / 20)), 0.6f, 1e-6);
}

TEST(LevelMeter, RisesInOneStepAndTakesManyBuffersToFall) {
    float level = LevelMeter::next(0, 0.8f);
    EXPECT_FLOAT_EQ(level, 0.8f);
    int buffers = 0;
    while (level > 0.1f) level = LevelMeter::next(level, 0), ++buffers;
    EXPECT_EQ(buffers, 13);
}

TEST(LevelMeter, RmsOfSixteenBitSamplesMatchesTheirFloatValues) {
    std::vector<short> whole(480);
    std::vector<float> floats(480);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        whole[i] = short(std::lround(16384 * std::sin(double(i) / 7)));
        floats[i] = float(whole[i]) / 32768.0f;
    }
    EXPECT_NEAR(LevelMeter::rms(whole.data(), whole.size()), LevelMeter::rms(floats.data(), floats.size()), 1e-6);
    EXPECT_EQ(LevelMeter::rms(floats.data(), 0), 0);
}

} // namespace
} // namespace recorder
