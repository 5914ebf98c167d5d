#include "audio/HighPassFilter.h"
#include "audio/MicCleaner.h"

#include "support/SoundFiles.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace recorder;
using namespace recorder::test;

namespace {

// The lag (in samples, within ±range) at which `b` best matches `a`.
int bestLag(const Samples& a, const Samples& b, int range) {
    int best = 0;
    double bestScore = -1e300;
    for (int lag = -range; lag <= range; ++lag) {
        double score = 0;
        for (std::size_t i = std::size_t(range); i + std::size_t(range) < std::min(a.size(), b.size()); i += 3)
            score += double(a[i]) * b[std::size_t(std::ptrdiff_t(i) + lag)];
        if (score > bestScore) {
            bestScore = score;
            best = lag;
        }
    }
    return best;
}

// Stand-in for a voice when no synthesiser is installed: a buzzy vowel that
// swells and fades like syllables.
Samples syllables(double seconds, int rate = 48000) {
    Samples out(std::size_t(seconds * rate));
    for (std::size_t i = 0; i < out.size(); ++i) {
        double t = double(i) / rate;
        double envelope = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * 3 * t);
        double voice = std::sin(2 * std::numbers::pi * 150 * t) + 0.6 * std::sin(2 * std::numbers::pi * 450 * t) +
                       0.3 * std::sin(2 * std::numbers::pi * 1200 * t);
        out[i] = float(0.15 * envelope * voice);
    }
    return out;
}

struct NoisySpeech {
    Samples clean;
    Samples noisy;
    std::vector<std::pair<double, double>> pauses;
    std::vector<std::pair<double, double>> spoken;
};

NoisySpeech noisySpeech(const std::filesystem::path& folder, int rate = 48000) {
    Samples a = speech("The quick brown fox jumps over the lazy dog.", folder, rate);
    Samples b = speech("Noise removal keeps the voice and drops the hiss.", folder, rate);
    if (a.empty() || b.empty()) a = b = syllables(2, rate);
    NoisySpeech s;
    s.clean = joined({silence(1.5, rate), a, silence(1.5, rate), b, silence(1.5, rate)});
    double aEnd = 1.5 + double(a.size()) / rate, bStart = aEnd + 1.5, bEnd = bStart + double(b.size()) / rate;
    s.pauses = {{0.3, 1.3}, {aEnd + 0.3, bStart - 0.3}, {bEnd + 0.3, bEnd + 1.3}};
    s.spoken = {{1.5, aEnd}, {bStart, bEnd}};
    s.noisy = mixed(s.clean, pinkNoise(double(s.clean.size()) / rate, 0.01, rate)); // -40 dBFS room noise
    return s;
}

// The input as the cleaner's own high-pass leaves it: its phase lead at low
// frequencies pulls a cross-correlation a sample or two early, which is no
// delay of the cleaner's.
Samples highPassed(Samples samples, int rate) {
    HighPassFilter(rate, 70).process(samples.data(), samples.size());
    return samples;
}

double rmsOver(const Samples& samples, const std::vector<std::pair<double, double>>& stretches, int rate = 48000) {
    Samples all;
    for (auto [from, to] : stretches) {
        Samples part = slice(samples, from, to, rate);
        all.insert(all.end(), part.begin(), part.end());
    }
    return rms(all);
}

} // namespace

TEST(MicCleaner, LowersTheNoiseInPausesAndKeepsTheVoiceLevelAndLength) {
    TempDir dir;
    NoisySpeech s = noisySpeech(dir.path());
    writeM4a(dir / "mic.m4a", s.noisy);
    MicCleaner::clean(dir / "mic.m4a", dir / "mic.clean-n.m4a", true, false);

    Samples before = readAll(dir / "mic.m4a");
    Samples after = readAll(dir / "mic.clean-n.m4a");
    ASSERT_EQ(after.size(), before.size());
    double floorDrop = decibels(rmsOver(before, s.pauses)) - decibels(rmsOver(after, s.pauses));
    double voiceChange = decibels(rmsOver(after, s.spoken)) - decibels(rmsOver(before, s.spoken));
    EXPECT_GT(floorDrop, 12) << "noise floor in the pauses";
    EXPECT_LT(std::fabs(voiceChange), 3) << "speech level";
    EXPECT_EQ(bestLag(highPassed(before, 48000), after, 600), 0) << "lined up sample for sample";
}

TEST(MicCleaner, LinesUpAndKeepsTheLengthAtARateTheSuppressorDoesntTake) {
    TempDir dir;
    NoisySpeech s = noisySpeech(dir.path(), 44100);
    writeM4a(dir / "mic.m4a", s.noisy, 44100);
    MicCleaner::clean(dir / "mic.m4a", dir / "out.m4a", true, false);
    Samples before = readAll(dir / "mic.m4a");
    Samples after = readAll(dir / "out.m4a");
    ASSERT_EQ(after.size(), before.size());
    EXPECT_EQ(AudioFileReader(dir / "out.m4a").fileSampleRate(), 44100);
    EXPECT_EQ(bestLag(highPassed(before, 44100), after, 600), 0);
    EXPECT_GT(decibels(rmsOver(before, s.pauses, 44100)) - decibels(rmsOver(after, s.pauses, 44100)), 12);
}

TEST(MicCleaner, TakesOutRumbleBelowTheVoiceWithoutTouchingIt) {
    TempDir dir;
    writeM4a(dir / "mic.m4a", mixed(tone(20, 3, 0.3), tone(1000, 3, 0.1)));
    MicCleaner::clean(dir / "mic.m4a", dir / "out.m4a", false, false);
    Samples after = readAll(dir / "out.m4a");
    Samples middle = slice(after, 0.5, 2.5);
    EXPECT_LT(levelAt(middle, 20), 0.3 / std::sqrt(2) * 0.1) << "20 Hz is down more than 20 dB";
    EXPECT_NEAR(levelAt(middle, 1000), 0.1 / std::sqrt(2), 0.005);
}

TEST(MicCleaner, LevelsAQuietVoiceTowardsTheTargetPerChannel) {
    TempDir dir;
    // Left quiet, right loud: each channel has a leveler of its own.
    Samples quiet = syllables(8), stereo;
    for (float x : quiet) {
        stereo.push_back(x * 0.1f);
        stereo.push_back(x * 2.0f);
    }
    writeM4a(dir / "mic.m4a", stereo, 48000, 2);
    MicCleaner::clean(dir / "mic.m4a", dir / "out.m4a", false, true);
    Samples after = readAll(dir / "out.m4a");
    ASSERT_EQ(after.size(), stereo.size());
    double leftBefore = rms(slice(channel(stereo, 2, 0), 5, 8)), leftAfter = rms(slice(channel(after, 2, 0), 5, 8));
    double rightBefore = rms(slice(channel(stereo, 2, 1), 5, 8)), rightAfter = rms(slice(channel(after, 2, 1), 5, 8));
    EXPECT_GT(decibels(leftAfter) - decibels(leftBefore), 10);
    EXPECT_LT(decibels(rightAfter) - decibels(rightBefore), -3);
    for (float x : after) ASSERT_LT(std::fabs(x), 0.95f) << "the soft ceiling holds (with AAC's error)";
}

TEST(MicCleaner, ReportsProgressUpToOneAndMovesThePartialFileIntoPlace) {
    TempDir dir;
    writeM4a(dir / "mic.m4a", syllables(5));
    writeText(dir / ".partial-out.m4a", "left over from an earlier try");
    writeText(dir / "out.m4a", "an older cleaned file");
    std::vector<double> progress;
    MicCleaner::clean(dir / "mic.m4a", dir / "out.m4a", true, true, [&](double p) { progress.push_back(p); });
    ASSERT_FALSE(progress.empty());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_DOUBLE_EQ(progress.back(), 1);
    EXPECT_FALSE(std::filesystem::exists(dir / ".partial-out.m4a"));
    EXPECT_EQ(readAll(dir / "out.m4a").size(), readAll(dir / "mic.m4a").size());
}

TEST(MicCleaner, FailsOnAnEmptyRecordingAndLeavesNoPartialFile) {
    TempDir dir;
    std::ofstream(dir / "mic.m4a");
    try {
        MicCleaner::clean(dir / "mic.m4a", dir / "out.m4a", true, true);
        FAIL() << "an empty file can't be cleaned";
    } catch (const MicCleaner::Failure& failure) {
        EXPECT_EQ(failure.kind(), MicCleaner::Failure::Kind::unreadable);
        EXPECT_STREQ(failure.what(), "The microphone recording could not be read.");
    }
    EXPECT_FALSE(std::filesystem::exists(dir / ".partial-out.m4a"));
    EXPECT_FALSE(std::filesystem::exists(dir / "out.m4a"));
}

TEST(MicCleaner, FailsWithTheEngineTextWhenTheOutputCantBeWritten) {
    TempDir dir;
    writeM4a(dir / "mic.m4a", syllables(1));
    try {
        MicCleaner::clean(dir / "mic.m4a", dir / "no such folder" / "out.m4a", false, true);
        FAIL() << "the folder doesn't exist";
    } catch (const MicCleaner::Failure& failure) {
        EXPECT_EQ(failure.kind(), MicCleaner::Failure::Kind::engine);
        EXPECT_EQ(std::string(failure.what()), "The microphone could not be cleaned up (" + failure.reason() + ").");
        EXPECT_FALSE(failure.reason().empty());
    }
}
