#include "TimelineFixtures.h"
#include "motion/CameraMotion.h"
#include "motion/Layout.h"

#include <gtest/gtest.h>

#include <limits>
#include <numbers>

using namespace recorder;
using recorder::test::cameraKeyframe;

namespace {

constexpr double wide = 16.0 / 9.0;
constexpr double pi = std::numbers::pi;

void expectRectNear(const Rect& actual, const Rect& expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-9);
    EXPECT_NEAR(actual.y, expected.y, 1e-9);
    EXPECT_NEAR(actual.width, expected.width, 1e-9);
    EXPECT_NEAR(actual.height, expected.height, 1e-9);
}

Rect cameraRect(CameraLayout layout, double bubbleSize = 0.24, double aspect = wide) {
    return *Layout::cameraRect(layout, 1920, 1080, bubbleSize, aspect, Layout::cameraMargin(1920, 1080));
}

CameraSettings settingsWith(CameraLayout base, std::vector<CameraLayoutKeyframe> keyframes,
                            std::optional<CameraTransition> transition = std::nullopt) {
    CameraSettings settings;
    settings.layout = base;
    settings.keyframes = std::move(keyframes);
    settings.transition = transition;
    return settings;
}

CameraMotionState stateAt(double t, const CameraSettings& settings, bool hidden = false) {
    return CameraMotion::state(t, 1920, 1080, wide, wide, 0.08, settings, hidden);
}

double back(double p) { return 1 + 2.70158 * std::pow(p - 1, 3) + 1.70158 * std::pow(p - 1, 2); }

} // namespace

TEST(CameraLayoutRect, BubblesAreSquaresInTheCornersSizedBetween8And60PercentOfTheHeight) {
    expectRectNear(cameraRect(CameraLayout::bubbleBottomRight), {1628.4, 788.4, 259.2, 259.2});
    expectRectNear(cameraRect(CameraLayout::bubbleTopLeft), {32.4, 32.4, 259.2, 259.2});
    expectRectNear(cameraRect(CameraLayout::bubbleBottomLeft, 0.24, 0.5), {32.4, 788.4, 259.2, 259.2});
    EXPECT_FALSE(Layout::cameraRect(CameraLayout::hidden, 1920, 1080, 0.24, wide, 32.4));
    EXPECT_NEAR(cameraRect(CameraLayout::bubbleTopRight, 0.9).height, 0.6 * 1080, 1e-9);
    EXPECT_NEAR(cameraRect(CameraLayout::bubbleTopRight, 0.01).height, 0.08 * 1080, 1e-9);
}

TEST(CameraLayoutRect, SideBySideKeepsTheCamerasAspectAndFullScreenOverflows) {
    expectRectNear(cameraRect(CameraLayout::sideBySide), {1273.2, 367.2, 614.4, 345.6});
    expectRectNear(cameraRect(CameraLayout::fullScreen), {0, 0, 1920, 1080});
    expectRectNear(cameraRect(CameraLayout::fullScreen, 0.24, 4.0 / 3.0), {0, -180, 1920, 1440});
    expectRectNear(cameraRect(CameraLayout::fullScreen, 0.24, 2), {-120, 0, 2160, 1080});
}

TEST(CameraScreenFrame, FitsTheScreenInsideThePaddingCentred) {
    expectRectNear(Layout::screenFrame(CameraLayout::bubbleBottomRight, 1920, 1080, wide, 0.08),
                   {153.6, 86.4, 1612.8, 907.2});
    expectRectNear(Layout::screenFrame(CameraLayout::hidden, 1920, 1080, 1, 0), {420, 0, 1080, 1080});
    Rect clamped = Layout::screenFrame(CameraLayout::fullScreen, 1920, 1080, wide, 0.9);
    EXPECT_NEAR(clamped.height, 1080 - 2 * 0.45 * 1080, 1e-9);
}

TEST(CameraScreenFrame, BesideTheCameraTheScreenKeepsTheAreaToItsLeft) {
    double area = 1920 - 614.4 - 32.4;
    double w = area - 2 * 86.4;
    expectRectNear(Layout::screenFrame(CameraLayout::sideBySide, 1920, 1080, wide, 0.08),
                   {(area - w) / 2, (1080 - w / wide) / 2, w, w / wide});
}

TEST(CameraMotionState, WithoutKeyframesItRestsInTheBaseLayout) {
    auto s = stateAt(5, settingsWith(CameraLayout::bubbleTopLeft, {}));
    EXPECT_EQ(s.from, CameraLayout::bubbleTopLeft);
    EXPECT_EQ(s.to, CameraLayout::bubbleTopLeft);
    EXPECT_EQ(s.progress, 1);
    expectRectNear(*s.rect, cameraRect(CameraLayout::bubbleTopLeft));
    EXPECT_EQ(s.scale, 1);
    EXPECT_EQ(s.flipX, 1);
    EXPECT_EQ(s.radiusMix, 1);
    EXPECT_TRUE(s.screenVisible);
}

TEST(CameraMotionState, HiddenIgnoresTheKeyframes) {
    auto settings = settingsWith(CameraLayout::fullScreen, {cameraKeyframe(1, CameraLayout::sideBySide)});
    auto s = stateAt(1.2, settings, true);
    EXPECT_EQ(s.from, CameraLayout::hidden);
    EXPECT_EQ(s.to, CameraLayout::hidden);
    EXPECT_FALSE(s.rect);
    EXPECT_TRUE(s.screenVisible);
    expectRectNear(s.screenFrame, Layout::screenFrame(CameraLayout::hidden, 1920, 1080, wide, 0.08));
}

TEST(CameraMotionState, AKeyframeExactlyAtTheTimeStartsItsTransition) {
    auto settings = settingsWith(CameraLayout::bubbleTopLeft, {cameraKeyframe(2, CameraLayout::bubbleTopRight)});
    auto s = stateAt(2, settings);
    EXPECT_EQ(s.from, CameraLayout::bubbleTopLeft);
    EXPECT_EQ(s.to, CameraLayout::bubbleTopRight);
    EXPECT_EQ(s.progress, 0);
    expectRectNear(*s.rect, cameraRect(CameraLayout::bubbleTopLeft));
    EXPECT_EQ(s.radiusMix, 0);
}

TEST(CameraMotionState, SmoothMovesTheRectAndScreenFrameWithQuadraticEasing) {
    auto settings = settingsWith(CameraLayout::bubbleTopLeft, {cameraKeyframe(2, CameraLayout::sideBySide)});
    auto s = stateAt(2.15, settings);
    EXPECT_NEAR(s.progress, 0.25, 1e-12);
    double p = s.progress, e = 2 * p * p;
    Rect a = cameraRect(CameraLayout::bubbleTopLeft), b = cameraRect(CameraLayout::sideBySide);
    expectRectNear(*s.rect, {a.x + (b.x - a.x) * e, a.y + (b.y - a.y) * e, a.width + (b.width - a.width) * e,
                             a.height + (b.height - a.height) * e});
    Rect fa = Layout::screenFrame(CameraLayout::bubbleTopLeft, 1920, 1080, wide, 0.08);
    Rect fb = Layout::screenFrame(CameraLayout::sideBySide, 1920, 1080, wide, 0.08);
    EXPECT_NEAR(s.screenFrame.width, fa.width + (fb.width - fa.width) * e, 1e-9);
    EXPECT_DOUBLE_EQ(s.radiusMix, e);
    auto done = stateAt(2.6, settings);
    EXPECT_EQ(done.from, CameraLayout::sideBySide) << "resting after the default 0.6 s";
}

TEST(CameraMotionState, ASecondKeyframeWithinTheDurationRestartsFromTheFirstsLayout) {
    auto settings = settingsWith(CameraLayout::bubbleTopLeft, {cameraKeyframe(2, CameraLayout::bubbleTopRight),
                                                               cameraKeyframe(2.2, CameraLayout::bubbleBottomRight)});
    auto s = stateAt(2.2, settings);
    EXPECT_EQ(s.from, CameraLayout::bubbleTopRight);
    EXPECT_EQ(s.progress, 0);
    expectRectNear(*s.rect, cameraRect(CameraLayout::bubbleTopRight));
}

TEST(CameraMotionState, TransitionDurationIsReadBetweenATenthAndThreeSeconds) {
    auto settings = settingsWith(CameraLayout::bubbleTopLeft, {cameraKeyframe(0, CameraLayout::bubbleTopRight)});
    settings.transitionDuration = 0;
    EXPECT_DOUBLE_EQ(stateAt(0.05, settings).progress, 0.5);
    settings.transitionDuration = 10;
    EXPECT_DOUBLE_EQ(stateAt(1.5, settings).progress, 0.5);
}

TEST(CameraMotionState, InstantAndUnchangingKeyframesRest) {
    auto settings = settingsWith(CameraLayout::bubbleTopLeft, {cameraKeyframe(1, CameraLayout::sideBySide)},
                                 CameraTransition::instant);
    EXPECT_EQ(stateAt(1.1, settings).from, CameraLayout::sideBySide);
    auto full = settingsWith(CameraLayout::fullScreen, {cameraKeyframe(1, CameraLayout::fullScreen),
                                                        cameraKeyframe(1.1, CameraLayout::fullScreen)});
    auto s = stateAt(1.2, full);
    EXPECT_EQ(s.progress, 1);
    EXPECT_FALSE(s.screenVisible) << "the screen isn't drawn under a full-screen camera";
}

TEST(CameraMotionState, PopFromFullScreenShowsTheScreenAndShrinksTheCameraBeforeTheBubbleGrows) {
    auto settings = settingsWith(CameraLayout::fullScreen, {cameraKeyframe(1, CameraLayout::bubbleBottomRight)},
                                 CameraTransition::pop);
    auto early = stateAt(1.15, settings);
    EXPECT_TRUE(early.screenVisible);
    expectRectNear(*early.rect, cameraRect(CameraLayout::fullScreen));
    EXPECT_DOUBLE_EQ(early.scale, 1 - std::pow(0.5, 3));
    EXPECT_EQ(early.radiusMix, 0);
    auto late = stateAt(1.45, settings);
    expectRectNear(*late.rect, cameraRect(CameraLayout::bubbleBottomRight));
    EXPECT_DOUBLE_EQ(late.scale, std::max(back(0.5), 0.0));
    EXPECT_EQ(late.radiusMix, 1);
}

TEST(CameraMotionState, FlipPassesEdgeOnAndEndsMirrored) {
    auto settings = settingsWith(CameraLayout::bubbleTopLeft, {cameraKeyframe(0, CameraLayout::bubbleTopRight)},
                                 CameraTransition::flip);
    EXPECT_NEAR(stateAt(0.15, settings).flipX, std::cos(0.25 * pi), 1e-12) << "by progress, not by the eased value";
    EXPECT_NEAR(stateAt(0.3, settings).flipX, 0, 1e-12);
    EXPECT_NEAR(stateAt(0.6 - 1e-9, settings).flipX, -1, 1e-9);
    EXPECT_EQ(stateAt(0.6, settings).flipX, 1) << "the resting state sets it back";
}

TEST(CameraMotionState, BounceOvershootsTheTargetRect) {
    auto settings = settingsWith(CameraLayout::bubbleTopLeft, {cameraKeyframe(0, CameraLayout::bubbleTopRight)},
                                 CameraTransition::bounce);
    double target = cameraRect(CameraLayout::bubbleTopRight).x;
    double furthest = 0;
    for (double t = 0; t < 0.6; t += 0.01) furthest = std::max(furthest, stateAt(t, settings).rect->x);
    EXPECT_GT(furthest, target);
}

TEST(CameraMotionState, LeavingShrinksAtTheOldPlaceAndEnteringGrowsAtTheNew) {
    auto leaving = settingsWith(CameraLayout::bubbleTopLeft, {cameraKeyframe(0, CameraLayout::hidden)});
    auto s = stateAt(0.3, leaving);
    expectRectNear(*s.rect, cameraRect(CameraLayout::bubbleTopLeft));
    EXPECT_DOUBLE_EQ(s.scale, 1 - 0.125);
    EXPECT_EQ(s.radiusMix, 0);
    auto entering = settingsWith(CameraLayout::hidden, {cameraKeyframe(0, CameraLayout::bubbleTopLeft)});
    auto e = stateAt(0.3, entering);
    expectRectNear(*e.rect, cameraRect(CameraLayout::bubbleTopLeft));
    EXPECT_DOUBLE_EQ(e.scale, 1 - 0.125);
    EXPECT_EQ(e.radiusMix, 1);
}

TEST(CameraMotionState, NonFiniteTimesAndDurationsRest) {
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    auto settings = settingsWith(CameraLayout::bubbleTopLeft, {cameraKeyframe(0, CameraLayout::bubbleTopRight),
                                                               cameraKeyframe(notANumber, CameraLayout::hidden)});
    EXPECT_EQ(stateAt(notANumber, settings).progress, 1);
    settings.transitionDuration = notANumber;
    EXPECT_EQ(stateAt(0.1, settings).progress, 1);
    EXPECT_EQ(stateAt(std::numeric_limits<double>::infinity(), settings).to, CameraLayout::bubbleTopRight);
}
