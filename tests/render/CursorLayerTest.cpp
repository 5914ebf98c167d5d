#include "cursor/CursorLayer.h"
#include "cursor/SmoothedLogCache.h"
#include "model/Project.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace recorder;

namespace {

const Rect fullHD{0, 0, 1920, 1080};

EventLog logOf(std::initializer_list<CursorSample> samples, std::vector<ClickEvent> clicks = {}) {
    EventLog log;
    log.samples = samples;
    log.clicks = std::move(clicks);
    return log;
}

// The pointer resting at one place, sampled at `rate` for `seconds`, after a
// first sample at the origin.
EventLog stepLog(double rate, double seconds) {
    EventLog log;
    log.samples.push_back({0, {0, 0}});
    for (int i = 1; i <= int(std::lround(seconds * rate)); ++i) log.samples.push_back({i / rate, {1, 0.5}});
    return log;
}

CursorSettings plainCursor() {
    CursorSettings settings;
    settings.smoothing = 0;
    return settings;
}

ClickEvent press(double time, Point at, ClickEvent::Button button = ClickEvent::Button::left) {
    return {time, at, button, true};
}

std::optional<CursorLayer> layerAt(const CursorSettings& settings, const EventLog& log, double time,
                                   const Rect& screen = fullHD) {
    return CursorLayer::atSourceTime(settings, log, log, time, screen);
}

} // namespace

TEST(CursorSmoothing, FollowsTheRealTimeStepsWhateverTheSamplingRate) {
    // A step settles as 1 − exp(−t/tau) with tau = 0.12·smoothing, at 60 and at 240 samples a second alike.
    for (double rate : {60.0, 240.0}) {
        EventLog smoothed = stepLog(rate, 0.5).smoothed(0.6);
        EXPECT_NEAR(smoothed.position(0.1).x, 1 - std::exp(-0.1 / 0.072), 1e-9) << rate;
        EXPECT_NEAR(smoothed.position(0.1).y, 0.5 * (1 - std::exp(-0.1 / 0.072)), 1e-9) << rate;
    }
}

TEST(CursorSmoothing, LeavesTwoSamplesAsTheyAre) {
    EventLog log = logOf({{0, {0, 0}}, {0.5, {1, 1}}});
    EXPECT_EQ(log.smoothed(1), log);
    EXPECT_DOUBLE_EQ(log.smoothed(1).position(0.25).x, 0.5);
}

TEST(CursorSmoothing, IgnoresASecondSampleAtTheSameTime) {
    EventLog smoothed = logOf({{0, {0, 0}}, {0, {1, 1}}, {0.12, {1, 1}}}).smoothed(1);
    EXPECT_EQ(smoothed.samples[1].position, (Point{0, 0}));
    EXPECT_NEAR(smoothed.samples[2].position.x, 1 - std::exp(-1.0), 1e-12);
}

TEST(CursorSmoothing, TreatsSmoothingAboveOneAsOneAndZeroAsExact) {
    EventLog log = stepLog(120, 1);
    EXPECT_EQ(log.smoothed(4), log.smoothed(1));
    EXPECT_EQ(log.smoothed(0), log);
}

TEST(SmoothedLogCache, FiltersOncePerLogAndSmoothing) {
    EventLog log = stepLog(120, 2);
    EventLog other = stepLog(60, 2);
    SmoothedLogCache cache;
    for (int frame = 0; frame < 50; ++frame) EXPECT_EQ(cache.smoothed(log, 0.6), log.smoothed(0.6));
    EXPECT_EQ(cache.filterRuns(), 1);
    EXPECT_EQ(cache.smoothed(log, 0.3), log.smoothed(0.3));
    EXPECT_EQ(cache.smoothed(other, 0.3), other.smoothed(0.3));
    EXPECT_EQ(cache.filterRuns(), 3);
    EXPECT_EQ(&cache.smoothed(log, 0), &log) << "no smoothing: the log itself, no copy";
    EXPECT_EQ(cache.filterRuns(), 3);
}

TEST(SmoothedLogCache, RefiltersALogThatGrewInPlace) {
    EventLog log = stepLog(120, 1);
    SmoothedLogCache cache;
    cache.smoothed(log, 0.6);
    log.samples.push_back({1.5, {0, 0}});
    EXPECT_EQ(cache.smoothed(log, 0.6), log.smoothed(0.6));
    EXPECT_EQ(cache.filterRuns(), 2);
}

TEST(CursorLayer, SizeFollowsTheDrawnScreenWidthNotTheCanvas) {
    CursorSettings settings = plainCursor();
    settings.size = 2;
    EventLog log = logOf({{0, {0.5, 0.5}}});
    EXPECT_DOUBLE_EQ(layerAt(settings, log, 0)->cursorHeight, 44);
    // The same 1920 canvas with padding: the screen is drawn 1536 wide.
    EXPECT_DOUBLE_EQ(layerAt(settings, log, 0, {192, 108, 1536, 864})->cursorHeight, 1536.0 / 1920 * 2 * 22);
}

TEST(CursorLayer, PutsTheHotSpotOnThePointerWithinTheScreenFrame) {
    CursorSettings settings = plainCursor();
    EventLog log = logOf({{0, {0.25, 0.5}}, {1, {0.75, 0.5}}});
    auto layer = layerAt(settings, log, 0.5, {100, 50, 1000, 600});
    ASSERT_TRUE(layer);
    EXPECT_DOUBLE_EQ(layer->position.x(), 100 + 500);
    EXPECT_DOUBLE_EQ(layer->position.y(), 50 + 300);
    double side = layer->cursorHeight;
    EXPECT_NEAR(layer->imageRect().x(), 600 - 0.12 * side, 1e-9) << "the arrow's tip";
    EXPECT_NEAR(layer->imageRect().y(), 350 - 0.06 * side, 1e-9);
    settings.style = CursorStyle::ring;
    layer = layerAt(settings, log, 0.5, {100, 50, 1000, 600});
    EXPECT_EQ(layer->imageRect().center(), QPointF(600, 350)) << "a ring is centred";
}

TEST(CursorLayer, DrawsFromTheSmoothedLogWhenAskedThroughTheProject) {
    Project project("Cursor", {1920, 1080, 60}, "1.0");
    project.clips.push_back({Uuid::random(), Uuid::random(), 10, 20, 1});
    project.cursor.smoothing = 1;
    EventLog log;
    for (int i = 0; i <= 2400; ++i) log.samples.push_back({i / 120.0, {i / 2400.0, 0.5}});
    SmoothedLogCache cache;
    // Output time 0.1 is source time 10.1 of the clip.
    auto layer = CursorLayer::make(project, 0.1, fullHD, log, cache);
    ASSERT_TRUE(layer);
    EXPECT_NEAR(layer->position.x(), 1920 * log.smoothed(1).position(10.1).x, 1e-9);
    EXPECT_LT(layer->position.x(), 1920 * log.position(10.1).x - 5) << "the smoothed pointer trails the real one";
    EXPECT_FALSE(CursorLayer::make(project, 11, fullHD, log, cache)) << "after the clips";
    project.cursor.visible = false;
    EXPECT_FALSE(CursorLayer::make(project, 0.1, fullHD, log, cache));
}

TEST(CursorLayer, HidesAfterRestingLongerThanAllowedWithNoRippleEither) {
    CursorSettings settings = plainCursor();
    settings.hideWhenIdleAfter = 2;
    EventLog log = logOf({{1, {0.5, 0.5}}, {2, {0.6, 0.5}}}, {press(4.2, {0.6, 0.5})});
    EXPECT_TRUE(layerAt(settings, log, 0.5)) << "before the first sample there is no idle time";
    EXPECT_TRUE(layerAt(settings, log, 4));
    EXPECT_FALSE(layerAt(settings, log, 4.5)) << "2.5 s without a sample, a click in the meantime or not";
    settings.hideWhenIdleAfter = 0;
    auto shown = layerAt(settings, log, 4.5);
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->ripples.size(), 1u);
}

TEST(CursorLayer, ARippleStartsAtSixTenthsOfTheCursorAndIsGoneAfterItsLifetime) {
    CursorSettings settings = plainCursor();
    settings.clickHighlightColor = {1, 0.5, 0, 0.5};
    EventLog log = logOf({{0, {0.5, 0.5}}}, {press(2, {0.25, 0.75})});
    auto layer = layerAt(settings, log, 2);
    ASSERT_EQ(layer->ripples.size(), 1u);
    const ClickRipple& ripple = layer->ripples[0];
    EXPECT_DOUBLE_EQ(ripple.radius, 0.6 * layer->cursorHeight);
    EXPECT_DOUBLE_EQ(ripple.thickness, 0.18 * layer->cursorHeight);
    EXPECT_DOUBLE_EQ(ripple.color.a, 0.5) << "full alpha is the highlight colour's own";
    EXPECT_EQ(ripple.centre, QPointF(480, 810)) << "where the click was, not where the cursor is";
    auto later = layerAt(settings, log, 2 + 0.225);
    ASSERT_EQ(later->ripples.size(), 1u);
    EXPECT_DOUBLE_EQ(later->ripples[0].radius, layer->cursorHeight * (0.5 * 2.2 + 0.6));
    EXPECT_DOUBLE_EQ(later->ripples[0].color.a, 0.25);
    EXPECT_TRUE(layerAt(settings, log, 2.45)->ripples.empty());
    EXPECT_TRUE(layerAt(settings, log, 1.99)->ripples.empty());
    settings.clickRipples = false;
    EXPECT_TRUE(layerAt(settings, log, 2)->ripples.empty());
}

TEST(CursorLayer, RingIsTheSmallerOfTwoRampsWithItsPeakAThicknessInside) {
    ClickRipple ripple{{0, 0}, 100, 10, {1, 1, 1, 0.8}};
    EXPECT_DOUBLE_EQ(ripple.alphaAt(90), 0.8);
    EXPECT_DOUBLE_EQ(ripple.alphaAt(87.5), 0.4);
    EXPECT_DOUBLE_EQ(ripple.alphaAt(95), 0.4);
    EXPECT_DOUBLE_EQ(ripple.alphaAt(100), 0);
    EXPECT_DOUBLE_EQ(ripple.alphaAt(50), 0);
}

TEST(CursorLayer, PressingShrinksTheCursorButOnlyALeftPressRipples) {
    CursorSettings settings = plainCursor();
    EventLog log = logOf({{0, {0.5, 0.5}}}, {press(1, {0.5, 0.5}, ClickEvent::Button::right),
                                             {1.3, {0.5, 0.5}, ClickEvent::Button::right, false}});
    EXPECT_DOUBLE_EQ(layerAt(settings, log, 0.9)->pressScale, 1);
    auto held = layerAt(settings, log, 1.1);
    EXPECT_DOUBLE_EQ(held->pressScale, 0.9);
    EXPECT_TRUE(held->ripples.empty());
    EXPECT_DOUBLE_EQ(held->imageRect().height(), 0.9 * held->cursorHeight);
    EXPECT_DOUBLE_EQ(layerAt(settings, log, 1.3)->pressScale, 1) << "released";
}
