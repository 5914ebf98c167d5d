#include "audio/SpeechDetector.h"

#include <gtest/gtest.h>

#include <vector>

using namespace recorder;

namespace {

constexpr double step = 0.05;
constexpr float quiet = 0.0005f; // -66 dB room tone
constexpr float voice = 0.1f;    // -20 dB

// Levels at 50 ms steps: `quiet` everywhere but in the given stretches.
std::vector<float> levels(double seconds, std::initializer_list<std::pair<double, double>> spoken) {
    std::vector<float> out(std::size_t(seconds / step + 0.5), quiet);
    for (auto [from, to] : spoken)
        for (std::size_t i = std::size_t(from / step + 0.5); i < std::size_t(to / step + 0.5); ++i) out[i] = voice;
    return out;
}

} // namespace

TEST(SpeechDetector, FindsEachStretchOfSpeechOnStepBoundaries) {
    auto ranges = SpeechDetector::ranges(levels(10, {{1, 2.5}, {5, 6}}), step);
    ASSERT_EQ(ranges.size(), 2u);
    EXPECT_NEAR(ranges[0].start, 1, 1e-9);
    EXPECT_NEAR(ranges[0].end, 2.5, 1e-9);
    EXPECT_NEAR(ranges[1].start, 5, 1e-9);
    EXPECT_NEAR(ranges[1].end, 6, 1e-9);
}

TEST(SpeechDetector, FindsNothingInSilenceOrASteadyTone) {
    EXPECT_TRUE(SpeechDetector::ranges(std::vector<float>(200, 0.0f), step).empty())
        << "the speech level doesn't clear -50 dB";
    EXPECT_TRUE(SpeechDetector::ranges(std::vector<float>(200, 0.3f), step).empty())
        << "floor and speech level are within 12 dB";
    EXPECT_TRUE(SpeechDetector::ranges(levels(10, {{0.3, 10}}), step).empty())
        << "wall-to-wall voice leaves no floor under it";
}

TEST(SpeechDetector, NeedsFiveLevelsAndAPositiveStep) {
    std::vector<float> four{quiet, voice, voice, quiet};
    EXPECT_TRUE(SpeechDetector::ranges(four, step).empty());
    EXPECT_TRUE(SpeechDetector::ranges(levels(10, {{1, 2}}), 0).empty());
    EXPECT_TRUE(SpeechDetector::ranges(levels(10, {{1, 2}}), -0.05).empty());
}

TEST(SpeechDetector, JoinsWordsLessThanPointSevenSecondsApart) {
    auto close = SpeechDetector::ranges(levels(12, {{2, 2.5}, {3.1, 3.6}}), step);
    ASSERT_EQ(close.size(), 1u) << "0.6 s apart";
    EXPECT_NEAR(close[0].start, 2, 1e-9);
    EXPECT_NEAR(close[0].end, 3.6, 1e-9);

    auto apart = SpeechDetector::ranges(levels(12, {{2, 2.5}, {3.3, 3.8}}), step);
    EXPECT_EQ(apart.size(), 2u) << "0.8 s apart";
}

TEST(SpeechDetector, DropsAClickShorterThanAQuarterSecond) {
    auto ranges = SpeechDetector::ranges(levels(12, {{2, 2.15}, {6, 7}}), step);
    ASSERT_EQ(ranges.size(), 1u);
    EXPECT_NEAR(ranges[0].start, 6, 1e-9);
}

TEST(SpeechDetector, ARunThatReachesTheLastLevelEndsWithTheLevels) {
    auto ranges = SpeechDetector::ranges(levels(10, {{8, 10}}), step);
    ASSERT_EQ(ranges.size(), 1u);
    EXPECT_NEAR(ranges[0].end, 10, 1e-9);
}

TEST(SpeechDetector, IgnoresBreathsFarBelowTheVoice) {
    auto breathy = levels(10, {{1, 2}, {5, 6}});
    for (std::size_t i = 60; i < 70; ++i) breathy[i] = 0.006f; // -44 dB: above floor + 8, below speech - 22
    auto ranges = SpeechDetector::ranges(breathy, step);
    EXPECT_EQ(ranges.size(), 2u);
}
