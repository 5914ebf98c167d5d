#include "RenderFixtures.h"
#include "effects/GaussianBlur.h"
#include "effects/HalfSize.h"
#include "effects/MotionBlur.h"
#include "effects/ScaledDraw.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace recorder;
using namespace recorder::test;

namespace {

QImage filled(int width, int height, QRgb colour) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return image;
}

QImage stripes(int width, int height, bool vertical) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) image.setPixel(x, y, ((vertical ? x : y) & 1) ? 0xFFFFFFFF : 0xFF000000);
    return image;
}

int spread(const QImage& image, QRect area) {
    int low = 255, high = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x) {
            low = std::min(low, qGreen(image.pixel(x, y)));
            high = std::max(high, qGreen(image.pixel(x, y)));
        }
    return high - low;
}

} // namespace

TEST(ScaledDraw, KeepsAFlatPictureFlatAtEveryScale) {
    for (double scale : {0.5, 0.55, 0.74, 0.8, 1.0, 1.3, 3.7}) {
        QImage target = filled(1200, 800, 0xFF000000);
        ScaledDraw::draw(target, filled(300, 200, 0xFF336699), scale, scale, 10.25, 5.5, 0);
        EXPECT_EQ(target.pixel(12, 8), 0xFF336699) << scale;
        EXPECT_EQ(target.pixel(int(10.25 + 150 * scale), int(5.5 + 100 * scale)), 0xFF336699) << scale;
    }
}

TEST(ScaledDraw, GivesEdgePixelsTheirExactCoverage) {
    QImage target = filled(40, 40, 0xFF000000);
    ScaledDraw::draw(target, filled(10, 10, 0xFFFFFFFF), 2, 2, 5.25, 6.75, 0);
    EXPECT_EQ(qGreen(target.pixel(4, 15)), 0);
    EXPECT_NEAR(qGreen(target.pixel(5, 15)), 191, 1) << "three quarters covered";
    EXPECT_EQ(qGreen(target.pixel(6, 15)), 255);
    EXPECT_NEAR(qGreen(target.pixel(15, 6)), 64, 1) << "a quarter covered";
    EXPECT_NEAR(qGreen(target.pixel(25, 15)), 64, 1);
}

TEST(ScaledDraw, RoundsItsCornersWithSoftEdges) {
    QImage target = filled(120, 120, 0xFF000000);
    ScaledDraw::draw(target, filled(100, 100, 0xFFFFFFFF), 1, 1, 10, 10, 20);
    EXPECT_EQ(qGreen(target.pixel(11, 11)), 0);
    EXPECT_EQ(qGreen(target.pixel(60, 11)), 255);
    EXPECT_EQ(qGreen(target.pixel(30, 30)), 255);
    int soft = 0;
    for (int i = 10; i < 30; ++i)
        for (int j = 10; j < 30; ++j) soft += qGreen(target.pixel(i, j)) > 20 && qGreen(target.pixel(i, j)) < 235;
    EXPECT_GT(soft, 15);
}

TEST(ScaledDraw, TurnsOnePixelStripesIntoEvenGreyBelowThreeQuarters) {
    for (bool vertical : {true, false}) {
        for (double scale : {0.52, 0.55, 0.61, 0.7}) {
            QImage target = filled(400, 400, 0xFF000000);
            ScaledDraw::draw(target, stripes(600, 600, vertical), scale, scale, 0, 0, 0);
            EXPECT_LE(spread(target, QRect(5, 5, 300, 300)), 2) << scale;
        }
    }
}

TEST(ScaledDraw, AgreesWithAreaAveragingOnText) {
    QImage text(900, 300, QImage::Format_ARGB32_Premultiplied);
    text.fill(Qt::white);
    for (int y = 4; y < 300; y += 9)
        for (int x = (y / 9) % 5; x < 900; x += 3) text.setPixel(x, y, 0xFF202020), text.setPixel(x, y + 1, 0xFF202020);
    QImage ours = filled(495, 165, 0xFF000000);
    ScaledDraw::draw(ours, text, 0.55, 0.55, 0, 0, 0);
    QImage reference = text.scaled(495, 165, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    double error = 0;
    int n = 0;
    for (int y = 2; y < 163; ++y)
        for (int x = 2; x < 493; ++x, ++n) error += std::pow(qGreen(ours.pixel(x, y)) - qGreen(reference.pixel(x, y)), 2);
    double psnr = 10 * std::log10(255.0 * 255.0 / (error / n));
    EXPECT_GT(psnr, 30);
}

TEST(HalfSize, ShrinksByAveragingEachTwoByTwoBlock) {
    QImage image = filled(5, 3, 0xFF000000);
    image.setPixel(0, 0, 0xFFFFFFFF);
    image.setPixel(1, 1, 0xFFFFFFFF);
    QImage half = HalfSize::shrink(image);
    ASSERT_EQ(half.size(), QSize(3, 2));
    EXPECT_EQ(qGreen(half.pixel(0, 0)), 128);
    EXPECT_EQ(qGreen(half.pixel(2, 1)), 0);
}

TEST(HalfSize, ExpandsAFlatPictureToTheSameFlatPicture) {
    QImage full = filled(9, 7, 0);
    HalfSize::expandInto(filled(5, 4, 0xFF405060), full);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) ASSERT_EQ(full.pixel(x, y), 0xFF405060);
}

TEST(GaussianBlur, LeavesAFlatPictureAsItIsAndSpreadsAPointBySigma) {
    QImage flat = filled(60, 40, 0xFF808080);
    GaussianBlur::blur(flat, 6);
    EXPECT_EQ(flat.pixel(0, 0), 0xFF808080) << "edges extend outwards";
    EXPECT_EQ(flat.pixel(30, 20), 0xFF808080);

    QImage point(201, 1, QImage::Format_Alpha8);
    point.fill(0);
    point.scanLine(0)[100] = 255;
    QImage wide = QImage(201, 1, QImage::Format_Alpha8);
    wide.fill(0);
    for (int x = 90; x <= 110; ++x) wide.scanLine(0)[x] = 255;
    GaussianBlur::blur(wide, 10);
    double sum = 0, spread = 0;
    for (int x = 0; x < 201; ++x) sum += wide.constScanLine(0)[x], spread += wide.constScanLine(0)[x] * (x - 100.0) * (x - 100.0);
    EXPECT_NEAR(sum, 21 * 255, 21 * 255 * 0.03) << "no ink is lost";
    // A 21-pixel bar has variance 36.7; the blur adds sigma² = 100.
    EXPECT_NEAR(spread / sum, 136.7, 14);
}

TEST(MotionBlur, LeavesAFlatPictureAsItIs) {
    QImage image = filled(120, 80, 0xFF6080A0);
    MotionBlur::zoom(image, QPointF(30, 30), 7, 20);
    MotionBlur::directional(image, 9, QPointF(1, 0.3));
    for (int y = 0; y < 80; y += 3)
        for (int x = 0; x < 120; x += 3) ASSERT_EQ(image.pixel(x, y), 0xFF6080A0);
}

TEST(MotionBlur, ZoomBlurKeepsItsCentreSharpAndSmearsOutwards) {
    QImage checks(400, 400, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < 400; ++y)
        for (int x = 0; x < 400; ++x) checks.setPixel(x, y, ((x / 4 + y / 4) & 1) ? 0xFFFFFFFF : 0xFF000000);
    QImage blurred = checks;
    MotionBlur::zoom(blurred, QPointF(200, 200), 6, 50);
    EXPECT_GT(spread(blurred, QRect(196, 196, 8, 8)), 200);
    EXPECT_LT(spread(blurred, QRect(360, 200, 8, 8)), 120);
}

TEST(MotionBlur, DirectionalBlurSpreadsAlongItsDirectionOnly) {
    QImage image = filled(101, 101, 0xFF000000);
    image.setPixel(50, 50, 0xFFFFFFFF);
    MotionBlur::directional(image, 8, QPointF(1, 0));
    EXPECT_GT(qGreen(image.pixel(56, 50)), 0);
    EXPECT_GT(qGreen(image.pixel(44, 50)), 0);
    EXPECT_EQ(qGreen(image.pixel(50, 53)), 0);
    EXPECT_EQ(qGreen(image.pixel(60, 50)), 0);
}
