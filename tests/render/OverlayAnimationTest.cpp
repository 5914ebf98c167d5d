#include "overlay/ItemAnimation.h"

#include "OverlayFixtures.h"

#include <gtest/gtest.h>

using namespace recorder;
using namespace recorder::test;

namespace {

constexpr double W = 1920, H = 1080, boxW = 400, boxH = 200;

MediaItem animated(MediaAnimation in, MediaAnimation out, double duration = 1, double start = 2, double end = 6) {
    MediaItem item = overlayItem(AssetKind::image, {0.1, 0.1, 0.2, 0.2}, start, end);
    item.inAnimation = in;
    item.outAnimation = out;
    item.animationDuration = duration;
    return item;
}

ItemAnimation at(const MediaItem& item, double t) { return ItemAnimation::at(item, t, W, H, boxW, boxH); }

} // namespace

TEST(ItemAnimation, FadeStartsTransparentAndEndsWhole) {
    MediaItem item = animated(MediaAnimation::fade, MediaAnimation::fade);
    EXPECT_DOUBLE_EQ(at(item, 2).opacity, 0);
    EXPECT_DOUBLE_EQ(at(item, 3).opacity, 1);
    EXPECT_DOUBLE_EQ(at(item, 4).opacity, 1);
    EXPECT_NEAR(at(item, 2.5).opacity, 1 - 0.125, 1e-12) << "ease out of one half";
    EXPECT_NEAR(at(item, 5.5).opacity, 1 - 0.125, 1e-12);
    EXPECT_NEAR(at(item, 6).opacity, 0, 1e-12);
}

TEST(ItemAnimation, StartsFromTheItemsOwnOpacity) {
    MediaItem item = animated(MediaAnimation::fade, MediaAnimation::none);
    item.opacity = 0.5;
    EXPECT_NEAR(at(item, 2.5).opacity, 0.5 * 0.875, 1e-12);
    EXPECT_DOUBLE_EQ(at(item, 4).opacity, 0.5);
}

TEST(ItemAnimation, ZeroDurationMeansNoAnimationAndFullDrawing) {
    MediaItem item = animated(MediaAnimation::slideUp, MediaAnimation::draw, 0);
    ItemAnimation a = at(item, 2);
    EXPECT_DOUBLE_EQ(a.opacity, 1);
    EXPECT_DOUBLE_EQ(a.dy, 0);
    item.kind = AssetKind::shape;
    EXPECT_DOUBLE_EQ(ItemAnimation::drawProgress(item, 5.999), 1);
}

// dy is applied downward: an in slideUp begins above its place and comes
// down to it; an out slideUp leaves downward. The names follow the arithmetic.
TEST(ItemAnimation, SlideSignsFollowTheArithmetic) {
    MediaItem up = animated(MediaAnimation::slideUp, MediaAnimation::slideUp);
    EXPECT_NEAR(at(up, 2).dy, -0.15 * H, 1e-9);
    EXPECT_NEAR(at(up, 6).dy, 0.15 * H, 1e-9);
    MediaItem down = animated(MediaAnimation::slideDown, MediaAnimation::slideDown);
    EXPECT_NEAR(at(down, 2).dy, 0.15 * H, 1e-9);
    EXPECT_NEAR(at(down, 6).dy, -0.15 * H, 1e-9);
    MediaItem left = animated(MediaAnimation::slideLeft, MediaAnimation::slideLeft);
    EXPECT_NEAR(at(left, 2).dx, 0.15 * W, 1e-9);
    EXPECT_NEAR(at(left, 6).dx, -0.15 * W, 1e-9);
    MediaItem right = animated(MediaAnimation::slideRight, MediaAnimation::slideRight);
    EXPECT_NEAR(at(right, 2).dx, -0.15 * W, 1e-9);
    EXPECT_NEAR(at(right, 6).dx, 0.15 * W, 1e-9);
    EXPECT_NEAR(at(right, 2.5).dx, -0.15 * W * 0.125, 1e-9);
}

TEST(ItemAnimation, PopOvershootsAndIsOpaqueAfterAThird) {
    MediaItem item = animated(MediaAnimation::pop, MediaAnimation::pop);
    double largest = 0;
    for (double t = 2; t < 3; t += 0.01) largest = std::max(largest, at(item, t).scale);
    EXPECT_GT(largest, 1.01);
    EXPECT_NEAR(at(item, 2 + 1.0 / 6).opacity, 0.5, 1e-9);
    EXPECT_DOUBLE_EQ(at(item, 2 + 0.34).opacity, 1);
    EXPECT_DOUBLE_EQ(at(item, 2).scale, 0);
    EXPECT_NEAR(at(item, 6).scale, 0.6, 1e-12) << "the out pop shrinks to 0.6";
    EXPECT_NEAR(at(item, 5.9).opacity, 0.3, 1e-9);
}

TEST(ItemAnimation, ShakeAndBounceMoveByTheBoxAndFadeInAQuarter) {
    MediaItem shake = animated(MediaAnimation::shake, MediaAnimation::none);
    EXPECT_NEAR(at(shake, 2.75).dx, 0.08 * boxW * (1 - 0.75) * std::sin(6 * M_PI * 0.75), 1e-9);
    EXPECT_NEAR(at(shake, 2.125).opacity, 0.5, 1e-9);
    MediaItem bounce = animated(MediaAnimation::bounce, MediaAnimation::bounce);
    EXPECT_NEAR(at(bounce, 2.2).dy, 0.35 * boxH * 0.8 * std::fabs(std::sin(2.5 * M_PI * 0.2)), 1e-9);
    EXPECT_GT(at(bounce, 2.2).dy, 0) << "bounces downward from its place";
    EXPECT_NEAR(at(bounce, 5.9).opacity, 0.4, 1e-9);
}

// An item shorter than twice the duration: both effects at once, multiplied.
TEST(ItemAnimation, OverlappingInAndOutMultiply) {
    MediaItem item = animated(MediaAnimation::fade, MediaAnimation::slideLeft, 1, 2, 3);
    double inE = 1 - std::pow(0.5, 3), outE = 1 - std::pow(0.5, 3);
    ItemAnimation a = at(item, 2.5);
    EXPECT_NEAR(a.opacity, inE * outE, 1e-12);
    EXPECT_NEAR(a.dx, -0.15 * W * (1 - outE), 1e-9);
    MediaItem pops = animated(MediaAnimation::pop, MediaAnimation::pop, 1, 2, 3);
    EXPECT_NEAR(at(pops, 2.5).scale, apply(Easing::spring, 0.5) * (0.6 + 0.4 * outE), 1e-12);
}

TEST(ItemAnimation, DrawFadesAnythingButAShape) {
    MediaItem picture = animated(MediaAnimation::draw, MediaAnimation::none);
    EXPECT_NEAR(at(picture, 2.5).opacity, 0.875, 1e-12);
    MediaItem shape = picture;
    shape.kind = AssetKind::shape;
    EXPECT_DOUBLE_EQ(at(shape, 2.5).opacity, 1);
    EXPECT_DOUBLE_EQ(ItemAnimation::drawProgress(shape, 2.5), 0.5);
}

TEST(ItemAnimation, DrawProgressTakesTheSmallerOfInAndOut) {
    MediaItem shape = animated(MediaAnimation::draw, MediaAnimation::draw, 1, 2, 3);
    shape.kind = AssetKind::shape;
    EXPECT_DOUBLE_EQ(ItemAnimation::drawProgress(shape, 2.3), 0.3);
    EXPECT_NEAR(ItemAnimation::drawProgress(shape, 2.8), 0.2, 1e-12);
    MediaItem outOnly = animated(MediaAnimation::none, MediaAnimation::draw, 0, 2, 3);
    outOnly.kind = AssetKind::shape;
    EXPECT_DOUBLE_EQ(ItemAnimation::drawProgress(outOnly, 2.9), 1) << "no duration: drawn whole";
}

TEST(ItemAnimation, DrawStepsRoundToAHundredth) {
    MediaItem shape = animated(MediaAnimation::draw, MediaAnimation::none, 1, 0, 5);
    shape.kind = AssetKind::shape;
    EXPECT_DOUBLE_EQ(ItemAnimation::drawSteps(shape, 0.004), 0);
    EXPECT_DOUBLE_EQ(ItemAnimation::drawSteps(shape, 0.006), 0.01);
    EXPECT_DOUBLE_EQ(ItemAnimation::drawSteps(shape, 0.4449), 0.44);
    EXPECT_DOUBLE_EQ(ItemAnimation::drawSteps(shape, 0.999), 1);
}

TEST(ItemAnimation, AbsurdValuesGiveFiniteResults) {
    MediaItem item = animated(MediaAnimation::bounce, MediaAnimation::shake, std::nan(""));
    ItemAnimation a = at(item, 2.1);
    EXPECT_DOUBLE_EQ(a.dy, 0) << "a duration that isn't a number means no animation";
    item.animationDuration = 1;
    a = ItemAnimation::at(item, std::nan(""), W, H, boxW, boxH);
    EXPECT_TRUE(std::isfinite(a.dx) && std::isfinite(a.dy) && std::isfinite(a.opacity) && std::isfinite(a.scale));
}
