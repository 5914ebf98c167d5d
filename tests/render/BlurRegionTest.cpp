#include "RenderFixtures.h"
#include "compose/FramePlan.h"
#include "effects/BlurRegion.h"
#include "effects/Pixelate.h"

#include <gtest/gtest.h>

#include <QPainter>

#include <cmath>
#include <limits>

using namespace recorder;
using namespace recorder::test;

namespace {

MediaItem blurItem(Rect frame, std::optional<std::string> style = std::nullopt,
                   std::optional<double> amount = std::nullopt) {
    MediaItem item;
    item.id = Uuid::random();
    item.kind = AssetKind::blur;
    item.start = 0;
    item.end = 10;
    item.frame = frame;
    item.blurStyle = std::move(style);
    item.blurAmount = amount;
    return item;
}

// Black and white columns 8 pixels wide: any blur greys them.
QImage columns(int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) image.setPixel(x, y, (x / 8) & 1 ? 0xFFFFFFFF : 0xFF000000);
    return image;
}

// The spread of greys along a row, over [x0, x1).
int contrast(const QImage& image, int y, int x0, int x1) {
    int low = 255, high = 0;
    for (int x = x0; x < x1; ++x) {
        low = std::min(low, qGreen(image.pixel(x, y)));
        high = std::max(high, qGreen(image.pixel(x, y)));
    }
    return high - low;
}

// A canvas filled by a screen of columns, with one blur region on it.
struct Scene {
    Project project = flatProject();

    Scene() {
        project.style.padding = 0;
        project.style.cornerRadius = 0;
    }

    QImage render(double time = 1) const {
        FrameInputs inputs;
        inputs.time = time;
        inputs.screen = SourceImage(columns(1920, 1080));
        return FrameRenderer().render(project, inputs, nullptr, 1920, 1080);
    }
};

} // namespace

TEST(BlurRegion, TakesItsStrengthFromTheAmountWithinLimits) {
    auto gaussian = BlurRegion::of(blurItem({0.1, 0.1, 0.2, 0.2}), 1920, 1080);
    ASSERT_TRUE(gaussian);
    EXPECT_EQ(gaussian->style, BlurRegion::Style::gaussian);
    EXPECT_DOUBLE_EQ(gaussian->amount, 0.5 * 36 + 4) << "0.5 without an amount";
    EXPECT_DOUBLE_EQ(BlurRegion::of(blurItem({0.1, 0.1, 0.2, 0.2}, "pixelate", 0.01), 1920, 1080)->amount, 0.05 * 40 + 6);
    EXPECT_DOUBLE_EQ(BlurRegion::of(blurItem({0.1, 0.1, 0.2, 0.2}, "pixelate", 3), 3840, 2160)->amount, 1 * 80 + 6);
    auto unknown = BlurRegion::of(blurItem({0.1, 0.1, 0.2, 0.2}, "swirl", 1), 1920, 1080);
    EXPECT_EQ(unknown->style, BlurRegion::Style::gaussian) << "unknown styles blur";
    EXPECT_DOUBLE_EQ(unknown->amount, 40);
    EXPECT_EQ(gaussian->rect, QRectF(192, 108, 384, 216));
}

TEST(BlurRegion, RoundsItsRectangleOutwardsAndSkipsOneUnderTwoPixels) {
    EXPECT_EQ(BlurRegion::of(blurItem({100.4 / 1920, 0.1, 50.2 / 1920, 0.2}), 1920, 1080)->rect.x(), 100);
    EXPECT_EQ(BlurRegion::of(blurItem({100.4 / 1920, 0.1, 50.2 / 1920, 0.2}), 1920, 1080)->rect.width(), 51);
    EXPECT_FALSE(BlurRegion::of(blurItem({100.0 / 1920, 0.1, 1.0 / 1920, 0.2}), 1920, 1080)) << "one pixel wide";
    EXPECT_FALSE(BlurRegion::of(blurItem({0.1, 0.1, 0.2, 1.0 / 1080}), 1920, 1080)) << "one pixel high";
    EXPECT_TRUE(BlurRegion::of(blurItem({100.0 / 1920, 0.1, 2.0 / 1920, 0.2}), 1920, 1080));
}

TEST(BlurRegion, LeavesOutRectanglesThatMakeNoSense) {
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    for (Rect frame : {Rect{nan, 0.1, 0.2, 0.2}, Rect{0.1, 0.1, inf, 0.2}, Rect{0.1, 0.1, -0.2, 0.2},
                       Rect{0.1, 0.1, 0.2, -0.2}, Rect{1e300, 0.1, 0.2, 0.2}, Rect{0.1, 0.1, 1e12, 1e12},
                       Rect{1.5, 0.1, 0.2, 0.2}, Rect{0.1, -0.9, 0.2, 0.2}})
        EXPECT_FALSE(BlurRegion::of(blurItem(frame), 1920, 1080)) << frame.x << "," << frame.y << " " << frame.width
                                                                  << "x" << frame.height;
    MediaItem invisible = blurItem({0.1, 0.1, 0.2, 0.2});
    invisible.opacity = 0;
    EXPECT_FALSE(BlurRegion::of(invisible, 1920, 1080));
}

TEST(BlurRegion, BlursInsideItsRectangleOnlyAndReachesPastTheCanvasEdge) {
    Scene scene;
    scene.project.media.push_back(blurItem({0.25, 0.25, 0.5, 0.5}));
    scene.project.media.push_back(blurItem({0.9, 0.0, 0.2, 0.1}));
    QImage frame = scene.render();
    keepForLooking(frame, "blur-region");
    EXPECT_LT(contrast(frame, 540, 600, 1300), 20) << "grey inside";
    EXPECT_EQ(contrast(frame, 540, 400, 470), 255) << "sharp left of it";
    EXPECT_EQ(contrast(frame, 200, 600, 1300), 255) << "sharp above it";
    EXPECT_LT(contrast(frame, 50, 1740, 1880), 20) << "a region past the right edge blurs up to it";
    EXPECT_EQ(scene.render(12), Scene().render(12)) << "after the item's end";
}

TEST(BlurRegion, SkipsABlurOfUnderTwoPixelsOnTheDrawnPicture) {
    auto region = BlurRegion::of(blurItem({0, 0, 1, 1}), 400, 300);
    ASSERT_NEAR(region->amount, 0.5 * 36 * 300 / 1080 + 4, 1e-12);
    QImage picture = columns(400, 300), before = picture;
    region->apply(picture, QTransform::fromScale(0.2, 0.2));
    EXPECT_EQ(picture, before) << "9 stage pixels drawn at 0.2x: under 2";
    region->apply(picture, QTransform::fromScale(0.25, 0.25));
    EXPECT_NE(picture, before) << "exactly 2.25";
}

TEST(BlurRegion, DrawsNothingForAOnePixelRectangle) {
    Scene scene;
    scene.project.media.push_back(blurItem({0.5, 0.25, 1.0 / 1920, 0.5}));
    EXPECT_EQ(scene.render(), Scene().render());
}

TEST(BlurRegion, PixelatesInBlocksStartingAtItsLowerLeftCorner) {
    Scene scene;
    // 0.5·40 + 6 = 26-pixel blocks from (400, 700) upwards and rightwards.
    scene.project.media.push_back(blurItem({400.0 / 1920, 300.0 / 1080, 520.0 / 1920, 400.0 / 1080}, "pixelate"));
    QImage frame = scene.render();
    keepForLooking(frame, "blur-region-pixelate");
    for (int block = 0; block < 20; ++block) {
        int x0 = 400 + 26 * block, y0 = 700 - 26;
        QRgb first = frame.pixel(x0, y0);
        for (int y = y0; y < y0 + 26; y += 5)
            for (int x = x0; x < x0 + 26; x += 5) ASSERT_EQ(frame.pixel(x, y), first) << "block " << block;
    }
    EXPECT_NE(frame.pixel(400, 699), frame.pixel(426, 699)) << "the blocks differ";
}

TEST(BlurRegion, PixelateSurvivesTinyAndSenselessBlockSizes) {
    QImage image = columns(64, 32), before = image;
    for (double cell : {0.0, 1e-9, 0.5, -3.0, std::numeric_limits<double>::quiet_NaN()}) {
        Pixelate::apply(image, {3, 7}, cell);
        EXPECT_EQ(image, before) << cell;
    }
    Pixelate::apply(image, {1e300, -1e300}, 8);
    EXPECT_EQ(image, before) << "8-pixel cells on the columns' own grid keep them";
    // The smallest strength on a tiny canvas still makes blocks of at least six pixels.
    auto tiny = BlurRegion::of(blurItem({0, 0, 1, 1}, "pixelate", 1e-6), 20, 10);
    ASSERT_TRUE(tiny);
    EXPECT_NEAR(tiny->amount, 0.05 * 40 * 10 / 1080 + 6, 1e-12);
    QImage small = columns(20, 10);
    tiny->apply(small, QTransform::fromScale(0.01, 0.01));
    tiny->apply(small, QTransform());
}

TEST(BlurRegion, RoundsItsCornersAndFadesByItsOpacity) {
    Scene scene;
    MediaItem item = blurItem({0.25, 0.25, 0.5, 0.5});
    item.cornerRadius = 100;
    item.opacity = 0.5;
    scene.project.media.push_back(item);
    QImage frame = scene.render();
    QImage sharp = Scene().render();
    keepForLooking(frame, "blur-region-rounded");
    EXPECT_EQ(frame.pixel(482, 272), sharp.pixel(482, 272)) << "outside the rounded corner";
    // Half the blurred grey over the columns: light and dark stay apart, by half.
    int half = contrast(frame, 540, 900, 1000);
    EXPECT_GT(half, 100);
    EXPECT_LT(half, 160);
}

TEST(BlurRegion, RepeatsTheStageEdgeButNotTheEdgeOfAZoomedView) {
    // A small black mark in the top right corner of a grey picture.
    QImage grey(400, 300, QImage::Format_ARGB32_Premultiplied);
    grey.fill(QColor(128, 128, 128));
    QPainter(&grey).fillRect(394, 0, 6, 6, Qt::black);
    auto region = BlurRegion::of(blurItem({0, 0, 1, 1}), 400, 300);
    ASSERT_TRUE(region);
    QImage stage = grey, zoomed = grey;
    region->apply(stage, QTransform());
    // The same pixels as a 2× zoom shows them: the stage goes on past every edge.
    region->apply(zoomed, QTransform(2, 0, 0, 2, -200, -150));
    EXPECT_LT(qRed(stage.pixel(399, 0)), 110) << "the canvas's own corner is repeated outwards";
    EXPECT_GT(qRed(zoomed.pixel(399, 0)), 118) << "a view's corner is not: the mark spreads like any other";
}

TEST(BlurRegion, RoundsOnlyTheCornersOfTheRegionNotOfTheViewThatCutsIt) {
    MediaItem item = blurItem({0, 0, 1, 1});
    item.cornerRadius = 40;
    auto region = BlurRegion::of(item, 400, 300);
    QImage zoomed = columns(400, 300);
    region->apply(zoomed, QTransform(2, 0, 0, 2, -200, -150));
    for (QPoint corner : {QPoint(0, 0), QPoint(399, 0), QPoint(0, 299), QPoint(399, 299)})
        EXPECT_NEAR(qGreen(zoomed.pixel(corner)), 128, 24) << corner.x() << "," << corner.y();
    QImage whole = columns(400, 300);
    region->apply(whole, QTransform());
    EXPECT_EQ(whole.pixel(0, 0), columns(400, 300).pixel(0, 0)) << "the region's own corner is cut";
}

TEST(BlurRegion, GrowsWithTheZoomAndKeepsItsPlaceOnTheRecording) {
    Scene scene;
    scene.project.media.push_back(blurItem({0.4, 0.4, 0.2, 0.2}));
    scene.project.zooms.push_back(zoomSegment(0, 10, {0.25, 0.25, 0.5, 0.5}, 0.2));
    QImage frame = scene.render(5);
    keepForLooking(frame, "blur-region-zoomed");
    FramePlan plan = FramePlan::make(scene.project, 5, {QSizeF(1920, 1080), QSizeF(), false}, 1920, 1080);
    ASSERT_NEAR(plan.zoom.m11(), 2, 1e-9);
    QRectF mapped = plan.zoom.mapRect(QRectF(768, 432, 384, 216));
    int y = int(mapped.center().y());
    EXPECT_LT(contrast(frame, y, int(mapped.left()) + 40, int(mapped.right()) - 40), 20);
    EXPECT_EQ(contrast(frame, y, int(mapped.left()) - 60, int(mapped.left()) - 2), 255) << "sharp just outside";
    EXPECT_GT(mapped.width(), 760) << "twice as wide as unzoomed";
}
