#include "audio/Ducking.h"

#include "TimelineFixtures.h"

#include <gtest/gtest.h>

using namespace recorder;
using recorder::test::mediaItem;
using recorder::test::projectWithClips;

namespace {

MediaItem music(double start, double end, double fadeIn = 0, double fadeOut = 0) {
    MediaItem item = mediaItem(start, end, AssetKind::audio);
    item.fadeIn = fadeIn;
    item.fadeOut = fadeOut;
    return item;
}

std::vector<double> timesOf(const std::vector<VolumePoint>& points) {
    std::vector<double> times;
    for (const auto& point : points) times.push_back(point.time);
    return times;
}

} // namespace

TEST(DuckingFactor, FallsBeforeSpeechHoldsThroughItAndRisesAfter) {
    std::vector<SpeechRange> speech{{10, 12}};
    EXPECT_DOUBLE_EQ(Ducking::factor(9.0, speech, 0.25), 1);
    EXPECT_NEAR(Ducking::factor(9.55, speech, 0.25), 1, 1e-12);
    EXPECT_NEAR(Ducking::factor(9.7, speech, 0.25), 0.625, 1e-12) << "halfway down the attack";
    EXPECT_NEAR(Ducking::factor(9.85, speech, 0.25), 0.25, 1e-12);
    EXPECT_DOUBLE_EQ(Ducking::factor(11, speech, 0.25), 0.25);
    EXPECT_DOUBLE_EQ(Ducking::factor(12, speech, 0.25), 0.25);
    EXPECT_NEAR(Ducking::factor(12.45, speech, 0.25), 0.625, 1e-12) << "halfway up the release";
    EXPECT_NEAR(Ducking::factor(12.9, speech, 0.25), 1, 1e-12);
    EXPECT_DOUBLE_EQ(Ducking::factor(20, speech, 0.25), 1);
}

TEST(DuckingFactor, OverlappingRampsTakeTheLowerValueInsteadOfMultiplying) {
    std::vector<SpeechRange> speech{{10, 11}, {11.5, 12}};
    // 11.2 is in the first range's release (0.5 + 0.5 · 0.2/0.9) and the
    // second's attack (1 − 0.5 · 0.15/0.3 = 0.75).
    EXPECT_NEAR(Ducking::factor(11.2, speech, 0.5), 0.5 + 0.5 * 0.2 / 0.9, 1e-12);
    EXPECT_DOUBLE_EQ(Ducking::factor(5, {}, 0.5), 1);
}

TEST(DuckingPoints, WithoutSpeechStandOnlyOnTheEndsAndFades) {
    auto points = Ducking::points(music(2, 10, 1, 2), {}, 0.25);
    EXPECT_EQ(timesOf(points), (std::vector<double>{2, 3, 8, 10}));
    EXPECT_DOUBLE_EQ(points[0].volume, 0);
    EXPECT_DOUBLE_EQ(points[1].volume, 1);
    EXPECT_DOUBLE_EQ(points[2].volume, 1);
    EXPECT_DOUBLE_EQ(points[3].volume, 0);
}

TEST(DuckingPoints, PutAKnotOnEveryCornerOfTheDuckInsideTheItem) {
    MediaItem item = music(0, 20);
    item.volume = 0.8;
    auto points = Ducking::points(item, {{10, 12}}, 0.25);
    std::vector<double> expected{0, 9.55, 9.85, 12, 12.9, 20};
    auto times = timesOf(points);
    ASSERT_EQ(times.size(), expected.size());
    for (std::size_t i = 0; i < times.size(); ++i) EXPECT_NEAR(times[i], expected[i], 1e-12);
    EXPECT_DOUBLE_EQ(points[1].volume, 0.8);
    EXPECT_NEAR(points[2].volume, 0.2, 1e-12);
    EXPECT_NEAR(points[3].volume, 0.2, 1e-12);
    EXPECT_NEAR(points[4].volume, 0.8, 1e-12);
}

TEST(DuckingPoints, LeaveOutCornersBeyondTheItemAndClampTheAmount) {
    auto points = Ducking::points(music(10, 12.5), {{10, 12}}, -3);
    EXPECT_EQ(timesOf(points), (std::vector<double>{10, 12, 12.5}));
    EXPECT_DOUBLE_EQ(points[0].volume, 0) << "an amount below 0 means silence";
    EXPECT_NEAR(points[2].volume, 0.5 / 0.9, 1e-12);
}

TEST(DuckingPoints, AreAllSilentForAMutedItem) {
    MediaItem item = music(0, 20, 1, 1);
    item.muted = true;
    for (const auto& point : Ducking::points(item, {{5, 6}}, 0.25)) EXPECT_EQ(point.volume, 0);
}

TEST(DuckingPoints, FadesAndDuckMultiplyAtEachKnot) {
    // Fade-out from 10 to 14 meets speech from 10.45: at 10.3 the fade gives
    // 0.925 and the duck is complete.
    auto points = Ducking::points(music(0, 14, 0, 4), {{10.45, 11}}, 0.5);
    auto at = [&](double t) {
        for (const auto& p : points)
            if (std::fabs(p.time - t) < 1e-9) return p.volume;
        ADD_FAILURE() << "no point at " << t;
        return -1.0;
    };
    EXPECT_NEAR(at(10.3), 0.925 * 0.5, 1e-12);
    EXPECT_NEAR(at(10), 1.0, 1e-12);
    EXPECT_NEAR(at(11.9), 0.525 * 1.0, 1e-12);
}

TEST(DuckingOnOutputTimeline, MovesSpeechThroughStartOffsetClipsAndSpeed) {
    // The microphone starts 1 s into the recording; the recording plays
    // 0–10 at speed 1 and 20–30 at speed 2, from output second 2.
    Project project = projectWithClips({{0, 10}, {20, 30}}, 2);
    project.clips[1].speed = 2;
    auto ranges = Ducking::onOutputTimeline({{3, 5}, {8, 20}, {12, 15}, {24, 27}}, project, 1);
    ASSERT_EQ(ranges.size(), 3u);
    EXPECT_NEAR(ranges[0].start, 6, 1e-12);
    EXPECT_NEAR(ranges[0].end, 8, 1e-12);
    EXPECT_NEAR(ranges[1].start, 11, 1e-12) << "speech on both sides of the cut joins at the seam";
    EXPECT_NEAR(ranges[1].end, 12.5, 1e-12);
    EXPECT_NEAR(ranges[2].start, 14.5, 1e-12) << "speech inside the cut is gone";
    EXPECT_NEAR(ranges[2].end, 16, 1e-12);
}

TEST(DuckingOnOutputTimeline, DucksAStretchAsOftenAsClipsPlayIt) {
    Project project = projectWithClips({{0, 4}, {3, 6}});
    auto ranges = Ducking::onOutputTimeline({{3.5, 5}}, project, 0);
    ASSERT_EQ(ranges.size(), 2u);
    EXPECT_NEAR(ranges[0].start, 3.5, 1e-12);
    EXPECT_NEAR(ranges[0].end, 4, 1e-12);
    EXPECT_NEAR(ranges[1].start, 4.5, 1e-12);
    EXPECT_NEAR(ranges[1].end, 6, 1e-12);
}
