#include "TimelineFixtures.h"
#include "motion/Layout.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace recorder;
using recorder::test::zoomSegment;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

void expectRectNear(const Rect& actual, const Rect& expected, double tolerance = 1e-12) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.width, expected.width, tolerance);
    EXPECT_NEAR(actual.height, expected.height, tolerance);
}

const Rect canvasFrame{0, 0, 1920, 1080};

} // namespace

TEST(Easing, SpringOvershootsAndIsOnlyExactlyOneAtTheEnd) {
    double peak = 0;
    for (int i = 1; i < 1000; ++i) peak = std::max(peak, apply(Easing::spring, i / 1000.0));
    EXPECT_GT(peak, 1);
    EXPECT_EQ(apply(Easing::spring, 1), 1);
    EXPECT_EQ(apply(Easing::spring, 0), 0);
    EXPECT_NE(apply(Easing::spring, 1 - 1e-9), 1);
}

TEST(ZoomTargetRect, IsTheRectWithoutKeyframes) {
    ZoomSegment z = zoomSegment(1, 5, {0.1, 0.2, 0.5, 0.5});
    EXPECT_EQ(z.targetRect(3), z.rect);
}

TEST(ZoomTargetRect, PansFromTheSegmentStartWithEaseInOutWhateverTheSegmentsEasing) {
    ZoomSegment z = zoomSegment(1, 9, {0, 0, 0.5, 0.5});
    z.easing = Easing::linear;
    z.keyframes = {{Uuid::random(), 5, {0.4, 0.2, 0.5, 0.5}}, {Uuid::random(), 3, {0.2, 0.2, 0.5, 0.5}}};
    expectRectNear(z.targetRect(2), {0.1, 0.1, 0.5, 0.5});
    double e = apply(Easing::easeInOut, 0.25);
    expectRectNear(z.targetRect(3.5), {0.2 + 0.2 * e, 0.2, 0.5, 0.5});
    expectRectNear(z.targetRect(7), {0.4, 0.2, 0.5, 0.5});
    expectRectNear(z.targetRect(0), {0, 0, 0.5, 0.5});
}

TEST(ZoomTargetRect, AKeyframeAtItsPredecessorsTimeIsAJump) {
    ZoomSegment z = zoomSegment(2, 9, {0, 0, 0.5, 0.5});
    z.keyframes = {{Uuid::random(), 2, {0.3, 0.3, 0.5, 0.5}}, {Uuid::random(), 4, {0.5, 0.5, 0.5, 0.5}}};
    expectRectNear(z.targetRect(1.99), {0.3, 0.3, 0.5, 0.5});
}

TEST(ZoomTargetRect, AKeyframeBeforeTheStartIsPassedOverAndPansOnFromThere) {
    ZoomSegment z = zoomSegment(2, 9, {0, 0, 0.5, 0.5});
    z.keyframes = {{Uuid::random(), 6, {0.1, 0, 0.5, 0.5}}, {Uuid::random(), 1, {0.5, 0, 0.5, 0.5}}};
    double e = apply(Easing::easeInOut, 0.6);
    expectRectNear(z.targetRect(4), {0.5 - 0.4 * e, 0, 0.5, 0.5});
}

TEST(ZoomRectAt, RampsInAndOutAndIsTheFullFrameOutside) {
    ZoomSegment z = zoomSegment(2, 8, {0.4, 0.2, 0.5, 0.5});
    z.easing = Easing::linear;
    EXPECT_EQ(z.rectAt(1.9), Rect::full());
    EXPECT_EQ(z.rectAt(8.1), Rect::full());
    expectRectNear(z.rectAt(2.5), {0.2, 0.1, 0.75, 0.75});
    expectRectNear(z.rectAt(5), z.rect);
    expectRectNear(z.rectAt(7.5), {0.2, 0.1, 0.75, 0.75});
    expectRectNear(z.rectAt(8), Rect::full());
}

TEST(ZoomRectAt, ASegmentShorterThanItsRampsRampsHalfEachWayWithoutAPlateau) {
    ZoomSegment z = zoomSegment(0, 1, {0.5, 0.5, 0.5, 0.5});
    z.inDuration = z.outDuration = 2;
    z.easing = Easing::linear;
    expectRectNear(z.rectAt(0.25), {0.25, 0.25, 0.75, 0.75});
    expectRectNear(z.rectAt(0.5), z.rect);
    expectRectNear(z.rectAt(0.75), {0.25, 0.25, 0.75, 0.75});
}

TEST(ZoomRectAt, NoInDurationJumpsToTheTargetAtTheStart) {
    ZoomSegment z = zoomSegment(2, 8, {0.4, 0.2, 0.5, 0.5});
    z.inDuration = 0;
    EXPECT_EQ(z.rectAt(2), z.rect);
}

TEST(ZoomRectAt, SpringOvershootsTheTargetOnTheWayIn) {
    ZoomSegment z = zoomSegment(0, 10, {0.25, 0.25, 0.5, 0.5});
    z.easing = Easing::spring;
    double narrowest = 1;
    for (double t = 0; t < 1; t += 0.01) narrowest = std::min(narrowest, z.rectAt(t).width);
    EXPECT_LT(narrowest, 0.5);
}

TEST(ZoomRectAt, NonFiniteTimesAndDurationsDoNotCrash) {
    ZoomSegment z = zoomSegment(0, 10, {0.25, 0.25, 0.5, 0.5});
    EXPECT_EQ(z.rectAt(notANumber), z.rect);
    z.inDuration = notANumber;
    z.outDuration = -std::numeric_limits<double>::infinity();
    EXPECT_EQ(z.rectAt(5), z.rect);
    z.keyframes = {{Uuid::random(), notANumber, Rect::full()}, {Uuid::random(), 2, Rect::full()}};
    EXPECT_NO_FATAL_FAILURE(z.targetRect(3));
}

TEST(ZoomTransformMap, ScalesByTheCurrentWidthAboutAnAnchorFromTheTarget) {
    Rect target{0.5, 0.5, 0.5, 0.5};
    ZoomTransform m = Layout::zoomTransform(target, target, canvasFrame, 1920, 1080);
    EXPECT_EQ(m.scale, 2);
    EXPECT_EQ(m.tx, -1920);
    EXPECT_EQ(m.ty, -1080);
    ZoomTransform ramp = Layout::zoomTransform({0.25, 0.25, 0.75, 0.75}, target, canvasFrame, 1920, 1080);
    EXPECT_DOUBLE_EQ(ramp.scale, 1 / 0.75);
    EXPECT_DOUBLE_EQ(ramp.tx, -(1 / 0.75 - 1) * 1920) << "the anchor stays at the target's";
}

TEST(ZoomTransformMap, PlacesTheAnchorThroughTheScreenFrameAndClampsIt) {
    Rect frame{160, 90, 1600, 900};
    ZoomTransform m = Layout::zoomTransform({0.25, 0.25, 0.5, 0.5}, {0.25, 0.25, 0.5, 0.5}, frame, 1920, 1080);
    double ax = (0.25 * 1600 + 160) / 960.0, ay = (0.25 * 900 + 90) / 540.0;
    EXPECT_DOUBLE_EQ(m.tx, -ax * 1920);
    EXPECT_DOUBLE_EQ(m.ty, -ay * 1080);
    ZoomTransform edge = Layout::zoomTransform({0.6, 0.6, 0.5, 0.5}, {0.6, 0.6, 0.5, 0.5}, frame, 1920, 1080);
    EXPECT_EQ(edge.tx, -1920) << "clamped to 1";
}

TEST(ZoomTransformMap, NoZoomKeepsTheMiddleAndATinyRectIsCappedAtOneHundred) {
    ZoomTransform none = Layout::zoomTransform(Rect::full(), Rect::full(), canvasFrame, 1920, 1080);
    EXPECT_EQ(none, (ZoomTransform{1, 0, 0}));
    ZoomTransform tiny = Layout::zoomTransform({0, 0, 0.005, 0.005}, {0, 0, 0.005, 0.005}, canvasFrame, 1920, 1080);
    EXPECT_EQ(tiny.scale, 100);
}

TEST(ZoomTransformMap, TheFocusIsTheFixedPointOrTheMiddle) {
    Point focus = Layout::zoomFocus(2, -1000, -500, 1920, 1080);
    EXPECT_EQ(focus, (Point{1000, 500}));
    EXPECT_EQ(Layout::zoomFocus(1, 0, 0, 1920, 1080), (Point{960, 540}));
}

TEST(ZoomTransformProperty, TheZoomedCanvasAlwaysCoversTheCanvasThroughoutASegment) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> unit(0, 1);
    const Easing easings[] = {Easing::linear, Easing::easeInOut, Easing::easeOut};
    for (int round = 0; round < 500; ++round) {
        auto randomRect = [&] {
            double w = 0.01 + unit(random) * 0.99;
            return Rect{unit(random) * (1 - w), unit(random) * (1 - w), w, w};
        };
        ZoomSegment z = zoomSegment(0, 0.5 + unit(random) * 6, randomRect());
        z.inDuration = unit(random) * 3;
        z.outDuration = unit(random) * 3;
        z.easing = easings[round % 3];
        for (int k = 0; k < round % 4; ++k) z.keyframes.push_back({Uuid::random(), unit(random) * z.end, randomRect()});
        double padding = unit(random) * 200;
        Rect frame{padding, padding * 0.5625, 1920 - 2 * padding, 1080 - 2 * padding * 0.5625};
        for (double t = z.start; t <= z.end; t += z.end / 97) {
            ZoomTransform m = Layout::zoomTransform(z.rectAt(t), z.targetRect(t), frame, 1920, 1080);
            ASSERT_LE(m.tx, 1e-9);
            ASSERT_LE(m.ty, 1e-9);
            ASSERT_GE(m.tx + m.scale * 1920, 1920 - 1e-9);
            ASSERT_GE(m.ty + m.scale * 1080, 1080 - 1e-9);
        }
    }
}

TEST(ZoomMotionBlurAmounts, AreZeroOnThePlateauAndWithoutMotionBlur) {
    ZoomSegment z = zoomSegment(0, 10, {0.25, 0.25, 0.5, 0.5});
    EXPECT_EQ(Layout::zoomMotionBlur(z, 5, canvasFrame, 0.5, 60, 1920, 1080).zoomAmount, 0);
    EXPECT_EQ(Layout::zoomMotionBlur(z, 5, canvasFrame, 0.5, 60, 1920, 1080).panAmount, 0);
    EXPECT_EQ(Layout::zoomMotionBlur(z, 0.5, canvasFrame, 0, 60, 1920, 1080), ZoomMotionBlur{});
}

TEST(ZoomMotionBlurAmounts, CompareThisFrameWithTheNextAtLeastAt24PerSecond) {
    ZoomSegment z = zoomSegment(0, 10, {0.25, 0.25, 0.5, 0.5});
    z.easing = Easing::linear;
    ZoomMotionBlur blur = Layout::zoomMotionBlur(z, 0.5, canvasFrame, 0.5, 10, 1920, 1080);
    double s1 = 1 / z.rectAt(0.5).width, s2 = 1 / z.rectAt(0.5 + 1.0 / 24).width;
    EXPECT_NEAR(blur.zoomAmount, 0.5 * (s2 - s1) / s1 * 1080 * 0.35, 1e-9);
    // Anchored at the target, the map's fixed point stays put: no pan.
    EXPECT_NEAR(blur.panAmount, 0, 1e-9);
    EXPECT_NEAR(blur.focus.x, 0.5 * 1920, 1e-9);
}

TEST(ZoomMotionBlurAmounts, APanBetweenKeyframesIsMeasuredInCanvasPixels) {
    ZoomSegment z = zoomSegment(0, 10, {0, 0, 0.5, 0.5});
    z.keyframes = {{Uuid::random(), 6, {0.5, 0, 0.5, 0.5}}};
    ZoomMotionBlur blur = Layout::zoomMotionBlur(z, 3, canvasFrame, 1, 60, 1920, 1080);
    ZoomTransform a = Layout::zoomTransform(z.rectAt(3), z.targetRect(3), canvasFrame, 1920, 1080);
    ZoomTransform b = Layout::zoomTransform(z.rectAt(3 + 1.0 / 60), z.targetRect(3 + 1.0 / 60), canvasFrame, 1920, 1080);
    EXPECT_EQ(blur.zoomAmount, 0);
    EXPECT_DOUBLE_EQ(blur.panAmount, std::fabs(b.tx - a.tx));
    EXPECT_GT(blur.panAmount, 1);
}

TEST(ZoomMotionBlurAmounts, TheLookAheadStopsAtTheSegmentsEnd) {
    ZoomSegment z = zoomSegment(0, 10, {0.25, 0.25, 0.5, 0.5});
    ZoomMotionBlur atEnd = Layout::zoomMotionBlur(z, 10, canvasFrame, 1, 60, 1920, 1080);
    EXPECT_EQ(atEnd.zoomAmount, 0);
}
