#include "audio/VoiceLeveler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

using namespace recorder;

namespace {

// A sine whose RMS is `rms` in every 20 ms window: 250 Hz fits five times.
std::vector<float> steadyTone(double rms, double seconds, int rate = 48000) {
    std::vector<float> out(std::size_t(seconds * rate));
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = float(rms * std::numbers::sqrt2 * std::sin(2 * std::numbers::pi * 250 * double(i) / rate));
    return out;
}

} // namespace

TEST(VoiceLeveler, LeavesSilenceAloneAndHoldsItsGain) {
    VoiceLeveler leveler(48000);
    auto out = leveler.process(std::vector<float>(48000, 0.0f));
    EXPECT_EQ(out.size(), 48000u);
    EXPECT_FLOAT_EQ(leveler.gain, 1.0f);
    EXPECT_FLOAT_EQ(leveler.loudness, 0.0f);
    for (float x : out) ASSERT_EQ(x, 0.0f);
}

TEST(VoiceLeveler, BringsAQuietVoiceUpSlowlyToTheTarget) {
    VoiceLeveler leveler(48000);
    leveler.process(steadyTone(0.02, 0.02));
    EXPECT_NEAR(leveler.gain, 1.24f, 1e-5f) << "one window moves 6 % of the way to 5";
    leveler.process(steadyTone(0.02, 0.5));
    EXPECT_LT(leveler.gain, 4.5f) << "half a second isn't enough to get there";
    leveler.process(steadyTone(0.02, 10));
    EXPECT_NEAR(leveler.gain, 5.0f, 0.01f) << "0.1 / 0.02";
    EXPECT_NEAR(leveler.loudness, 0.02f, 0.0005f);
}

TEST(VoiceLeveler, BringsALoudVoiceDownFastButNotBelowTheFloor) {
    VoiceLeveler leveler(48000);
    leveler.process(steadyTone(0.5, 0.2));
    EXPECT_LT(leveler.gain, 0.5f) << "ten windows are enough to catch a shout";
    leveler.process(steadyTone(0.5, 5));
    EXPECT_NEAR(leveler.gain, 0.35f, 0.001f) << "0.2 is below the 0.35 floor";
}

TEST(VoiceLeveler, HoldsTheGainThroughAPause) {
    VoiceLeveler leveler(48000);
    leveler.process(steadyTone(0.02, 3));
    float gain = leveler.gain, loudness = leveler.loudness;
    leveler.process(steadyTone(0.004, 2)); // under the gate
    EXPECT_FLOAT_EQ(leveler.gain, gain);
    EXPECT_FLOAT_EQ(leveler.loudness, loudness);
}

TEST(VoiceLeveler, BendsPeaksUnderTheCeilingAndPassesSamplesBelowTheKnee) {
    VoiceLeveler big(48000);
    std::vector<float> window(960, 0.0f);
    window[0] = 2.0f;
    auto out = big.process(window);
    EXPECT_LT(out[0], 0.89f);
    EXPECT_GT(out[0], 0.8f);

    VoiceLeveler small(48000);
    window[0] = 0.5f;
    EXPECT_EQ(small.process(window)[0], 0.5f);

    VoiceLeveler negative(48000);
    window[0] = -2.0f;
    EXPECT_GT(negative.process(window)[0], -0.89f);
}

TEST(VoiceLeveler, RampsTheGainAcrossEachWindowWithoutSteps) {
    VoiceLeveler leveler(48000);
    auto out = leveler.process(std::vector<float>(960 * 3, 0.05f));
    // Constant input: output follows the gain, which moves at most a little
    // from one sample to the next.
    for (std::size_t i = 1; i < out.size(); ++i) ASSERT_LT(std::fabs(out[i] - out[i - 1]), 0.0005f) << i;
    EXPECT_FLOAT_EQ(out[0], 0.05f) << "the first sample has the old gain";
}

TEST(VoiceLeveler, KeepsTheRestForFlushWhichTreatsItAsOneShortWindow) {
    VoiceLeveler leveler(48000);
    EXPECT_EQ(VoiceLeveler(1000).window, 64) << "20 ms, but never fewer than 64 samples";
    auto out = leveler.process(std::vector<float>(1000, 0.05f));
    EXPECT_EQ(out.size(), 960u);
    EXPECT_EQ(leveler.pending.size(), 40u);
    float before = leveler.gain;
    auto rest = leveler.flush();
    EXPECT_EQ(rest.size(), 40u);
    EXPECT_TRUE(leveler.pending.empty());
    EXPECT_NE(leveler.gain, before) << "the short window counts as a step of its own";
    EXPECT_TRUE(leveler.flush().empty());
}
