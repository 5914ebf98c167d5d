#include "overlay/ShapeCache.h"
#include "overlay/ShapeRenderer.h"

#include "OverlayFixtures.h"
#include "RenderFixtures.h"

#include <gtest/gtest.h>

#include <QPainter>

using namespace recorder;
using namespace recorder::test;

namespace {

constexpr double H = 1080;

ShapeSpec spec(ShapeKind kind, bool shadow = false) {
    ShapeSpec s;
    s.kind = kind;
    s.color = {1, 0, 0, 1};
    s.strokeWidth = 0.01;
    s.headSize = 3.5;
    s.shadow = shadow;
    return s;
}

bool inked(QColor c) { return c.alpha() > 128; }
bool red(QColor c) { return c.alpha() > 200 && c.red() > 200 && c.green() < 60; }

// The raster over mid grey, for a person to look at.
void keep(const QImage& raster, const std::string& name) {
    QImage shown(raster.size(), QImage::Format_ARGB32_Premultiplied);
    shown.fill(QColor(150, 150, 150));
    QPainter(&shown).drawImage(0, 0, raster);
    keepPicture(shown, "shape-" + name);
}

} // namespace

TEST(ShapePadding, LeavesRoomForStrokeHeadAndShadow) {
    ShapeSpec arrow = spec(ShapeKind::arrow, true);
    // k = 10.8, head = 37.8, glow = 31.6: ceil(31.6 + 16.2 + 26.46)
    EXPECT_EQ(ShapeRenderer::padding(arrow, H), 75);
    ShapeSpec line = spec(ShapeKind::line);
    EXPECT_EQ(ShapeRenderer::padding(line, H), 17);
    line.strokeWidth = 0;
    EXPECT_EQ(ShapeRenderer::padding(line, H), 2) << "the stroke is at least one pixel";
}

TEST(ShapeRaster, IsTheBoxWithItsPaddingAround) {
    ShapeSpec arrow = spec(ShapeKind::arrow, true);
    QImage raster = ShapeRenderer::raster(arrow, 400, 100, H, 1);
    EXPECT_EQ(raster.size(), QSize(400 + 150, 100 + 150));
}

TEST(ShapeRaster, ArrowHeadSitsAtTheEndPoint) {
    int m = ShapeRenderer::padding(spec(ShapeKind::arrow), H);
    for (auto [direction, tip, tail] : {std::tuple{ShapeDirection::right, QPoint(400, 50), QPoint(0, 50)},
                                        std::tuple{ShapeDirection::left, QPoint(0, 50), QPoint(400, 50)},
                                        std::tuple{ShapeDirection::downRight, QPoint(400, 100), QPoint(0, 0)},
                                        std::tuple{ShapeDirection::up, QPoint(200, 0), QPoint(200, 100)}}) {
        ShapeSpec arrow = spec(ShapeKind::arrow);
        arrow.direction = direction;
        QImage raster = ShapeRenderer::raster(arrow, 400, 100, H, 1);
        QPoint t = tip + QPoint(m, m), s = tail + QPoint(m, m);
        QPointF u = QPointF(t - s) / std::hypot(t.x() - s.x(), t.y() - s.y());
        QPointF n(-u.y(), u.x());
        double head = 10.8 * 3.5;
        // Half way down the head it is wider than the shaft could be.
        QPointF side = QPointF(t) - 0.5 * head * u + 0.25 * head * n;
        EXPECT_TRUE(red(raster.pixelColor(side.toPoint()))) << int(direction);
        EXPECT_TRUE(red(raster.pixelColor((QPointF(t) - 6 * u).toPoint()))) << "ink right at the tip";
        EXPECT_FALSE(inked(raster.pixelColor((QPointF(t) + 3 * u).toPoint()))) << "nothing beyond the tip";
        QPointF tailSide = QPointF(s) + 0.5 * head * u + 0.25 * head * n;
        EXPECT_FALSE(inked(raster.pixelColor(tailSide.toPoint()))) << "no head at the start";
        keep(raster, "arrow-" + std::to_string(int(direction)));
    }
}

TEST(ShapeRaster, ArrowShorterThanItsHeadIsAllHead) {
    ShapeSpec arrow = spec(ShapeKind::arrow);
    int m = ShapeRenderer::padding(arrow, H);
    QImage raster = ShapeRenderer::raster(arrow, 20, 2, H, 1);
    // The head is as long as the arrow: its base is at the start, and the
    // shaft ends inside it, so only the round cap of the shaft's start
    // (k/2 = 5.4 pixels) shows behind it, and nothing past the tip.
    int mid = m + 1;
    EXPECT_TRUE(red(raster.pixelColor(m + 2, mid + 8))) << "the base is 12.4 pixels wide each side";
    EXPECT_EQ(countPixels(raster, QRect(0, 0, m - 6, raster.height()), inked), 0);
    EXPECT_EQ(countPixels(raster, QRect(m + 22, 0, raster.width(), raster.height()), inked), 0);
    EXPECT_FALSE(inked(raster.pixelColor(m - 3, mid + 6))) << "no shaft wider than the cap behind the base";
    keep(raster, "arrow-all-head");
}

TEST(ShapeRaster, DrawProgressGrowsFromTheStart) {
    ShapeSpec line = spec(ShapeKind::line);
    int m = ShapeRenderer::padding(line, H);
    QImage half = ShapeRenderer::raster(line, 400, 40, H, 0.5);
    EXPECT_TRUE(red(half.pixelColor(m + 10, m + 20)));
    EXPECT_TRUE(red(half.pixelColor(m + 190, m + 20)));
    EXPECT_FALSE(inked(half.pixelColor(m + 215, m + 20)));
}

TEST(ShapeRaster, RectangleOutlineIsDashedOnByProgress) {
    ShapeSpec rect = spec(ShapeKind::rectangle);
    rect.cornerRadius = 0;
    QImage whole = ShapeRenderer::raster(rect, 300, 200, H, 1);
    QImage half = ShapeRenderer::raster(rect, 300, 200, H, 0.5);
    double share = double(countPixels(half, half.rect(), inked)) / countPixels(whole, whole.rect(), inked);
    EXPECT_NEAR(share, 0.5, 0.08);
    keep(half, "rectangle-half-drawn");
    ShapeSpec ellipse = spec(ShapeKind::ellipse);
    QImage quarter = ShapeRenderer::raster(ellipse, 300, 200, H, 0.25);
    QImage full = ShapeRenderer::raster(ellipse, 300, 200, H, 1);
    share = double(countPixels(quarter, quarter.rect(), inked)) / countPixels(full, full.rect(), inked);
    EXPECT_NEAR(share, 0.25, 0.08);
    keep(quarter, "ellipse-quarter-drawn");
}

TEST(ShapeRaster, FillsWithTheFillOpacityAndStrokelessIsFilled) {
    ShapeSpec rect = spec(ShapeKind::rectangle);
    rect.filled = true;
    rect.fillOpacity = 0.5;
    int m = ShapeRenderer::padding(rect, H);
    QImage filled = ShapeRenderer::raster(rect, 300, 200, H, 1);
    EXPECT_NEAR(filled.pixelColor(m + 150, m + 100).alpha(), 128, 3);
    EXPECT_TRUE(red(filled.pixelColor(m + 150, m + 1))) << "stroked on top";
    ShapeSpec plain = spec(ShapeKind::ellipse);
    plain.strokeless = true;
    plain.filled = false;
    plain.fillOpacity = 1;
    QImage strokeless = ShapeRenderer::raster(plain, 300, 200, H, 1);
    EXPECT_TRUE(red(strokeless.pixelColor(m + 150, m + 100)));
    EXPECT_FALSE(inked(strokeless.pixelColor(m + 150, m - 2))) << "no stroke outside the fill";
    keep(filled, "rectangle-filled");
    keep(strokeless, "ellipse-strokeless");
}

TEST(ShapeRaster, OutlineAndShadowAreDark) {
    ShapeSpec arrow = spec(ShapeKind::arrow, true);
    arrow.outline = true;
    int m = ShapeRenderer::padding(arrow, H);
    QImage raster = ShapeRenderer::raster(arrow, 400, 60, H, 1);
    keep(raster, "arrow-outline-shadow");
    // Just outside the red stroke (k/2 = 5.4) the dark outline (0.8k = 8.6).
    QColor edge = raster.pixelColor(m + 150, m + 30 - 7);
    EXPECT_GT(edge.alpha(), 100);
    EXPECT_LT(edge.red(), 60);
    // Below the outline, the soft shadow.
    QColor below = raster.pixelColor(m + 150, m + 30 + 16);
    EXPECT_GT(below.alpha(), 10);
    EXPECT_LT(below.alpha(), 160);
    EXPECT_LT(below.red(), 10);
}

TEST(ShapeCache, KeyIsHashSizeCanvasAndStep) {
    ShapeSpec arrow = spec(ShapeKind::arrow);
    std::string key = ShapeCache::key(arrow, 400, 100, 1080, 0.5);
    EXPECT_EQ(key, std::to_string(ShapeCache::hash(arrow)) + "|400x100|1080|0.5");
    ShapeSpec other = arrow;
    other.color.g = 0.5;
    EXPECT_NE(ShapeCache::hash(other), ShapeCache::hash(arrow));
    EXPECT_EQ(ShapeCache::hash(spec(ShapeKind::arrow)), ShapeCache::hash(arrow)) << "the same look, the same hash";
}

TEST(ShapeCache, ReusesRastersAndEmptiesWholePastItsBound) {
    ShapeCache cache;
    ShapeSpec line = spec(ShapeKind::line);
    SourceImage first = cache.shape(line, 40, 10, H, 1);
    SourceImage again = cache.shape(line, 40, 10, H, 1);
    EXPECT_EQ(first.image().constBits(), again.image().constBits());
    std::size_t largest = 0;
    for (int step = 1; step <= 300; ++step) {
        cache.shape(line, 40 + step, 10, H, 1);
        largest = std::max(largest, cache.size());
    }
    EXPECT_EQ(largest, ShapeCache::bound + 1);
    EXPECT_LT(cache.size(), 100u) << "emptied once past the bound, then refilled";
}

TEST(ShapeRaster, AbsurdValuesGiveASmallPictureOrNone) {
    ShapeSpec huge = spec(ShapeKind::arrow, true);
    huge.strokeWidth = 1e9;
    QImage raster = ShapeRenderer::raster(huge, 100, 100, H, 1);
    EXPECT_TRUE(raster.isNull() || raster.width() <= ShapeRenderer::largestSide);
    huge.strokeWidth = std::nan("");
    huge.headSize = 1e12;
    raster = ShapeRenderer::raster(huge, 100, 100, H, 1);
    EXPECT_TRUE(raster.isNull() || raster.width() <= ShapeRenderer::largestSide);
    EXPECT_TRUE(ShapeRenderer::raster(spec(ShapeKind::ellipse), 100000, 100000, H, 1).isNull());
    ShapeSpec nan = spec(ShapeKind::rectangle);
    nan.cornerRadius = std::nan("");
    nan.fillOpacity = -4;
    nan.filled = true;
    nan.color = {std::nan(""), 2, -1, 1};
    EXPECT_FALSE(ShapeRenderer::raster(nan, 50, 50, H, 1).isNull());
}
