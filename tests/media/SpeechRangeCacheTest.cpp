#include "audio/SpeechRangeCache.h"

#include "support/SoundFiles.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace recorder;
using namespace recorder::test;

TEST(SpeechRangeCache, FindsSpokenPhrasesWithinATenthOfASecondOfThePausesAroundThem) {
    TempDir dir;
    Samples first = speech("Welcome to the demo of the new editor.", dir.path());
    Samples second = speech("Now we cut the boring parts out.", dir.path());
    if (first.empty() || second.empty()) GTEST_SKIP() << "neither flite nor espeak-ng is installed";
    Samples voice = joined({silence(1.5), first, silence(2), second, silence(1.5)});
    writeM4a(dir / "mic.m4a", mixed(voice, pinkNoise(double(voice.size()) / 48000, 0.001)));

    double firstStart = 1.5, firstEnd = firstStart + double(first.size()) / 48000;
    double secondStart = firstEnd + 2, secondEnd = secondStart + double(second.size()) / 48000;
    auto ranges = SpeechRangeCache::shared().speechRanges(dir / "mic.m4a");
    ASSERT_EQ(ranges.size(), 2u);
    EXPECT_NEAR(ranges[0].start, firstStart, 0.1);
    EXPECT_NEAR(ranges[0].end, firstEnd, 0.1);
    EXPECT_NEAR(ranges[1].start, secondStart, 0.1);
    EXPECT_NEAR(ranges[1].end, secondEnd, 0.1);
}

TEST(SpeechRangeCache, AnswersAgainFromTheTableUntilTheFileChanges) {
    TempDir dir;
    auto file = dir / "mic.wav";
    writeWav(file, joined({silence(1), pinkNoise(1, 0.1), silence(1)}));
    auto first = SpeechRangeCache::shared().speechRanges(file);
    ASSERT_EQ(first.size(), 1u);
    // Same name, same second: the table answers, whatever is on disk now.
    auto stamp = std::filesystem::last_write_time(file);
    writeWav(file, silence(3));
    std::filesystem::last_write_time(file, stamp);
    EXPECT_EQ(SpeechRangeCache::shared().speechRanges(file), first);
    std::filesystem::last_write_time(file, stamp + std::chrono::seconds(5));
    EXPECT_TRUE(SpeechRangeCache::shared().speechRanges(file).empty());
}

TEST(SpeechRangeCache, GivesNoRangesForAFileItCantRead) {
    TempDir dir;
    writeText(dir / "mic.m4a", "");
    EXPECT_TRUE(SpeechRangeCache::shared().speechRanges(dir / "mic.m4a").empty());
    EXPECT_TRUE(SpeechRangeCache::shared().speechRanges(dir / "none.m4a").empty());
}

TEST(SpeechRangeCache, LevelsAreTheRmsOfEach50MillisecondsOfTheFirstChannel) {
    TempDir dir;
    // Left speaks, right is silent; 1.025 s leaves half a last window.
    Samples stereo;
    for (float x : tone(500, 1.025, 0.4)) {
        stereo.push_back(x);
        stereo.push_back(0);
    }
    writeWav(dir / "s.wav", stereo, 48000, 2);
    auto levels = SpeechRangeCache::levels(dir / "s.wav");
    ASSERT_EQ(levels.size(), 21u);
    EXPECT_NEAR(levels[3], 0.4 / std::sqrt(2), 0.001);
    EXPECT_NEAR(levels[20], 0.4 / std::sqrt(2) / std::sqrt(2), 0.002) << "half a window over a whole window's length";
}
