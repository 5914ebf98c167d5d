#include "TimelineFixtures.h"
#include "motion/AutoZoomGenerator.h"

#include <gtest/gtest.h>

#include <limits>

using namespace recorder;
using recorder::test::projectWithClips;

namespace {

ClickEvent press(double time, Point position, ClickEvent::Button button = ClickEvent::Button::left) {
    return {time, position, button, true};
}

std::vector<ZoomSegment> generate(const EventLog& log, const Project& project) {
    return AutoZoomGenerator{}.generate(log, project);
}

} // namespace

TEST(AutoZoomGenerator, OneClickMakesOneSegmentThatStartsBeforeItAndLastsTheMinimum) {
    EventLog log;
    log.clicks = {press(10, {0.5, 0.5})};
    auto zooms = generate(log, projectWithClips({{0, 60}}));
    ASSERT_EQ(zooms.size(), 1u);
    const ZoomSegment& z = zooms[0];
    EXPECT_NEAR(z.start, 9.28, 1e-12);
    EXPECT_NEAR(z.end, 12.08, 1e-12);
    EXPECT_EQ(z.rect, (Rect{0.25, 0.25, 0.5, 0.5}));
    EXPECT_TRUE(z.keyframes.empty());
    EXPECT_EQ(z.inDuration, 1.2);
    EXPECT_EQ(z.outDuration, 1.2);
    EXPECT_EQ(z.easing, Easing::easeInOut);
    EXPECT_TRUE(z.isAuto);
}

TEST(AutoZoomGenerator, ClicksAreMappedToOutputTime) {
    EventLog log;
    log.clicks = {press(25, {0.5, 0.5})};
    Project p = projectWithClips({{0, 10}, {20, 40}}, 3);
    auto zooms = generate(log, p);
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_NEAR(zooms[0].start, 3 + 10 + 5 - 0.72, 1e-12);
}

TEST(AutoZoomGenerator, AClickNearTheStartBeginsAtZero) {
    EventLog log;
    log.clicks = {press(0.1, {0.5, 0.5})};
    auto zooms = generate(log, projectWithClips({{0, 60}}));
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_EQ(zooms[0].start, 0);
    EXPECT_EQ(zooms[0].end, 2.8);
}

TEST(AutoZoomGenerator, ClicksTwoAndAHalfSecondsApartShareACluster) {
    EventLog log;
    log.clicks = {press(10, {0.5, 0.5}), press(12.5, {0.5, 0.5})};
    auto zooms = generate(log, projectWithClips({{0, 60}}));
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_NEAR(zooms[0].end, 12.5 + 1.6, 1e-12);
}

TEST(AutoZoomGenerator, ALongerPauseStartsANewSegmentMovedUpToThePreviousEnd) {
    EventLog log;
    log.clicks = {press(10, {0.5, 0.5}), press(12.51, {0.5, 0.5})};
    auto zooms = generate(log, projectWithClips({{0, 60}}));
    ASSERT_EQ(zooms.size(), 2u);
    EXPECT_NEAR(zooms[0].end, 12.08, 1e-12);
    EXPECT_EQ(zooms[1].start, zooms[0].end) << "11.79 lay before the first's end";
    EXPECT_NEAR(zooms[1].end, 12.51 - 0.72 + 2.8, 1e-12);
}

TEST(AutoZoomGenerator, TheRectStaysInsideTheFrameAtTheEdges) {
    EventLog log;
    log.clicks = {press(10, {0.95, 0.02})};
    auto zooms = generate(log, projectWithClips({{0, 60}}));
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_EQ(zooms[0].rect.x, 0.5);
    EXPECT_EQ(zooms[0].rect.y, 0);
}

TEST(AutoZoomGenerator, OnlyAMoveAwayFromTheViewAddsAPanKeyframe) {
    EventLog log;
    log.clicks = {press(10, {0.5, 0.5}), press(10.5, {0.55, 0.5}), press(11, {0.7, 0.5}), press(11.5, {0.75, 0.5})};
    auto zooms = generate(log, projectWithClips({{0, 60}}));
    ASSERT_EQ(zooms.size(), 1u);
    ASSERT_EQ(zooms[0].keyframes.size(), 1u) << "0.05 away adds nothing; 0.2 away adds a pan; then near it again";
    EXPECT_EQ(zooms[0].keyframes[0].time, 11);
    EXPECT_NEAR(zooms[0].keyframes[0].rect.x, 0.45, 1e-12);
}

TEST(AutoZoomGenerator, KeysZoomToWhereThePointerRests) {
    EventLog log;
    log.samples = {{0, {0.1, 0.1}}, {20, {0.9, 0.9}}};
    log.keys = {{10, "A", true}, {10.2, "A", false}};
    auto zooms = generate(log, projectWithClips({{0, 60}}));
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_NEAR(zooms[0].rect.x, 0.25, 1e-12);
    EXPECT_NEAR(zooms[0].end, 12.08, 1e-12) << "the release doesn't extend the zoom";
}

TEST(AutoZoomGenerator, KeysWithoutSamplesReleasesScrollsAndCutOutClicksMakeNoZoom) {
    EventLog log;
    log.keys = {{10, "A", true}};
    log.clicks = {{5, {0.5, 0.5}, ClickEvent::Button::left, false}, press(15, {0.5, 0.5})};
    log.scrolls = {{20, {0.5, 0.5}, 0, 4}};
    log.samples = {};
    EXPECT_TRUE(generate(log, projectWithClips({{0, 10}, {20, 60}})).empty());
}

TEST(AutoZoomGenerator, EveryButtonCounts) {
    EventLog log;
    log.clicks = {press(10, {0.5, 0.5}, ClickEvent::Button::right), press(30, {0.5, 0.5}, ClickEvent::Button::other)};
    EXPECT_EQ(generate(log, projectWithClips({{0, 60}})).size(), 2u);
}

TEST(AutoZoomGenerator, TheRecordingsEndCutsTheSegmentAndTooShortOnesGo) {
    EventLog log;
    log.clicks = {press(0.5, {0.5, 0.5})};
    auto oneSecond = generate(log, projectWithClips({{0, 1}}));
    ASSERT_EQ(oneSecond.size(), 1u);
    EXPECT_EQ(oneSecond[0].start, 0);
    EXPECT_EQ(oneSecond[0].end, 1);
    log.clicks = {press(0.3, {0.5, 0.5})};
    EXPECT_TRUE(generate(log, projectWithClips({{0, 0.4}})).empty());
}

TEST(AutoZoomGenerator, AZoomOfOneIsReadAsOnePointOhOne) {
    EventLog log;
    log.clicks = {press(10, {0.5, 0.5})};
    AutoZoomGenerator generator;
    generator.zoom = 1;
    auto zooms = generator.generate(log, projectWithClips({{0, 60}}));
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_DOUBLE_EQ(zooms[0].rect.width, 1 / 1.01);
}

TEST(AutoZoomGenerator, ResultIsSortedWithoutOverlapsAndChangesNothing) {
    EventLog log;
    for (int i = 0; i < 400; ++i) log.clicks.push_back(press(i * 1.37 + (i % 7) * 0.9, {(i % 10) / 10.0, 0.5}));
    Project p = projectWithClips({{0, 200}, {300, 700}});
    Project before = p;
    auto zooms = generate(log, p);
    EXPECT_EQ(p, before);
    ASSERT_FALSE(zooms.empty());
    for (std::size_t i = 1; i < zooms.size(); ++i) {
        EXPECT_GE(zooms[i].start, zooms[i - 1].end);
        EXPECT_GE(zooms[i].end - zooms[i].start, 0.5);
    }
}

TEST(AutoZoomGenerator, NonFiniteEventsNeitherCrashNorMakeNonFiniteRects) {
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    EventLog log;
    log.clicks = {press(notANumber, {0.5, 0.5}), press(10, {notANumber, std::numeric_limits<double>::infinity()}),
                  press(10.5, {0.5, notANumber})};
    auto zooms = generate(log, projectWithClips({{0, 60}}));
    ASSERT_EQ(zooms.size(), 1u);
    EXPECT_TRUE(std::isfinite(zooms[0].rect.x) && std::isfinite(zooms[0].rect.y));
}
