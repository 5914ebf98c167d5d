#include "RenderFixtures.h"
#include "cursor/CursorImages.h"
#include "compose/FramePlan.h"
#include "cursor/CursorLayer.h"
#include "motion/Layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using namespace recorder;
using namespace recorder::test;

namespace {

constexpr int side = CursorImages::canvasPoints * CursorImages::pixelsPerPoint;

QColor colorOf(const RGBAColor& c, double alpha) {
    return QColor::fromRgbF(float(c.r), float(c.g), float(c.b), float(alpha));
}

// Premultiplied pixels as colours a person would name.
QColor seen(const QImage& image, int x, int y) {
    return image.convertToFormat(QImage::Format_ARGB32).pixelColor(x, y);
}

// One recording second with the pointer resting at `at`, a left press at
// `clickAt` seconds, and a project whose one clip plays it from time 0.
struct Scene {
    Project project = flatProject();
    EventLog log;

    explicit Scene(Point at, std::optional<double> clickAt = std::nullopt) {
        project.clips.push_back({Uuid::random(), Uuid::random(), 0, 10, 1});
        project.cursor.smoothing = 0;
        project.style.padding = 0.1;
        log.samples = {{0, at}, {10, at}};
        if (clickAt) log.clicks = {{*clickAt, at, ClickEvent::Button::left, true}};
    }

    QImage render(double time, int width = 1920, int height = 1080) {
        FrameInputs inputs;
        inputs.time = time;
        inputs.screen = solidPicture(1920, 1080, Qt::black);
        return FrameRenderer().render(project, inputs, &log, width, height);
    }

    Rect screenFrame() const { return Layout::screenFrame(CameraLayout::hidden, 1920, 1080, 16.0 / 9, 0.1); }
};

} // namespace

TEST(CursorImages, KeysByStyleAndTintAndMakesEachPictureOnce) {
    CursorImages images;
    RGBAColor red{1, 0, 0, 1};
    EXPECT_EQ(CursorImages::key(CursorStyle::dot, red), "dot|1,0,0");
    const SourceImage& first = images.image(CursorStyle::dot, red);
    EXPECT_EQ(&images.image(CursorStyle::dot, red), &first);
    images.image(CursorStyle::ring, std::nullopt);
    EXPECT_TRUE(images.contains(CursorImages::key(CursorStyle::ring, CursorImages::defaultTint())));
    EXPECT_EQ(images.size(), 2u);
}

TEST(CursorImages, ATintedArrowIsANewEntryWithTheSamePicture) {
    CursorImages images;
    const QImage& plain = images.image(CursorStyle::arrow, std::nullopt).image();
    const QImage& tinted = images.image(CursorStyle::arrow, RGBAColor{1, 0, 0, 1}).image();
    EXPECT_EQ(images.size(), 2u);
    EXPECT_EQ(plain, tinted);
}

TEST(CursorImages, ArrowHasItsTipAtTheHotSpotWhiteInsideAndASoftShadowBelow) {
    QImage arrow = CursorImages::draw(CursorStyle::arrow, {});
    keepForLooking(arrow, "cursor-arrow");
    ASSERT_EQ(arrow.size(), QSize(side, side));
    QPointF hot = CursorImages::hotSpot(CursorStyle::arrow) * side;
    // The black outline's tip is within a pixel or two of the hot spot, nothing above or left of it.
    EXPECT_EQ(seen(arrow, int(hot.x()) + 2, int(hot.y()) + 3), QColor(Qt::black));
    EXPECT_LT(qAlpha(arrow.pixel(int(hot.x()) - 6, int(hot.y()) - 6)), 10);
    EXPECT_EQ(seen(arrow, 14 * 4, 30 * 4), QColor(Qt::white)) << "inside the arrow";
    QColor shadow = seen(arrow, 32 * 4, 59 * 4 + 2);
    EXPECT_GT(shadow.alpha(), 20) << "below the tail";
    EXPECT_LT(shadow.alpha(), 128);
    EXPECT_LT(shadow.red(), 10);
}

TEST(CursorImages, DotIsTheTintAtItsCentre) {
    RGBAColor tint{0.9, 0.2, 0.1, 1};
    QImage dot = CursorImages::draw(CursorStyle::dot, tint);
    keepForLooking(dot, "cursor-dot");
    // The dot at 0.9 over its own shadow (black at 0.5 of the dot's alpha).
    QColor expected = QColor::fromRgbF(float(0.9 * 0.9 / 0.945), float(0.2 * 0.9 / 0.945), float(0.1 * 0.9 / 0.945), 0.945f);
    EXPECT_TRUE(near(seen(dot, side / 2, side / 2), expected)) << describe(seen(dot, side / 2, side / 2));
    EXPECT_LT(qAlpha(dot.pixel(1, 1)), 3);
    // The shadow reaches a little past the dot's edge (20 points from the centre).
    EXPECT_GT(qAlpha(dot.pixel(side / 2 + 21 * 4, side / 2)), 5);
}

TEST(CursorImages, RingIsATintedCircleOfRadius24PointsWithAThinDarkEdge) {
    QImage ring = CursorImages::draw(CursorStyle::ring, CursorImages::defaultTint());
    keepForLooking(ring, "cursor-ring");
    QColor tint = colorOf(CursorImages::defaultTint(), 1);
    int c = side / 2;
    for (auto [dx, dy] : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}})
        EXPECT_TRUE(near(seen(ring, c + dx * 24 * 4, c + dy * 24 * 4), tint, 3)) << dx << "," << dy;
    EXPECT_EQ(qAlpha(ring.pixel(c, c)), 0) << "hollow";
    QColor edge = seen(ring, c + int(26.5 * 4), c);
    EXPECT_LT(edge.red(), 10);
    EXPECT_NEAR(edge.alpha(), 0.6 * 255, 40);
}

TEST(FrameRendererCursor, PutsTheArrowTipOnThePointerAboveTheScreen) {
    Scene scene({0.5, 0.25});
    QImage frame = scene.render(0.5);
    keepForLooking(frame, "frame-cursor-arrow");
    Rect r = scene.screenFrame();
    double px = r.x + r.width * 0.5, py = r.y + r.height * 0.25;
    double h = r.width / 1920 * 3 * 22;
    EXPECT_EQ(at(frame, px + 0.2 * h, py + 0.4 * h), QColor(Qt::white)) << "inside the arrow";
    // The tip: the outline starts within two pixels of the pointer, nothing sits above it.
    bool tip = false;
    for (int dy = 0; dy <= 2; ++dy)
        for (int dx = -1; dx <= 2; ++dx) tip = tip || at(frame, px + dx, py + dy) != QColor(Qt::black);
    EXPECT_TRUE(tip);
    for (int dx = -3; dx <= 3; ++dx) EXPECT_EQ(at(frame, px + dx, py - 3), QColor(Qt::black));
    EXPECT_EQ(at(frame, px - 0.1 * h, py + 0.4 * h), QColor(Qt::black)) << "left of the arrow's stem";
}

TEST(FrameRendererCursor, ZoomsWithTheScreen) {
    Scene scene({0.5, 0.5});
    scene.project.cursor.style = CursorStyle::dot;
    scene.project.cursor.tint = RGBAColor{1, 0, 0, 1};
    scene.project.zooms.push_back(zoomSegment(1, 3, {0.25, 0.25, 0.5, 0.5}, 0.2));
    auto redWidth = [](const QImage& frame, int y) {
        int count = 0;
        for (int x = 0; x < frame.width(); ++x) count += qRed(frame.pixel(x, y)) > 150 && qGreen(frame.pixel(x, y)) < 60;
        return count;
    };
    QImage plain = scene.render(0.5);
    QImage zoomed = scene.render(2);
    keepForLooking(zoomed, "frame-cursor-zoomed");
    EXPECT_TRUE(near(at(plain, 960, 540), QColor(230, 0, 0), 3)) << describe(at(plain, 960, 540));
    FramePlan plan = FramePlan::make(scene.project, 2, {QSizeF(1920, 1080), QSizeF(), false}, 1920, 1080);
    ASSERT_NEAR(plan.zoom.m11(), 2, 1e-9);
    QPointF centre = plan.zoom.map(QPointF(960, 540));
    EXPECT_TRUE(near(at(zoomed, centre.x(), centre.y()), QColor(230, 0, 0), 3)) << describe(at(zoomed, centre.x(), centre.y()));
    double height = scene.screenFrame().width / 1920 * 3 * 22;
    EXPECT_NEAR(redWidth(plain, 540), 40.0 / 64 * height, 3);
    EXPECT_NEAR(redWidth(zoomed, int(centre.y())), 2 * 40.0 / 64 * height, 4);
}

TEST(FrameRendererCursor, DrawsARippleRingAroundAFreshClick) {
    Scene scene({0.5, 0.5}, 1.0);
    scene.project.cursor.style = CursorStyle::dot;
    scene.project.cursor.clickHighlightColor = {0, 1, 0, 1};
    QImage frame = scene.render(1.1);
    keepForLooking(frame, "frame-cursor-ripple");
    double h = scene.screenFrame().width / 1920 * 3 * 22;
    ClickRipple ripple{{960, 540}, h * (0.1 / 0.45 * 2.2 + 0.6), h * 0.18, {0, 1, 0, 1 - 0.1 / 0.45}};
    // Along a ray to the right: green as the ring's alpha says, black inside and out.
    for (int x = 960 + int(0.5 * h); x < 960 + ripple.radius + 4; ++x) {
        QColor pixel = at(frame, x, 540);
        double d = x + 0.5 - 960;
        EXPECT_NEAR(pixel.green(), 255 * ripple.alphaAt(d), 6) << "at " << d << " of " << ripple.radius;
        EXPECT_EQ(pixel.red(), 0);
    }
    EXPECT_EQ(scene.render(1.5), scene.render(3)) << "gone after 0.45 s";
}

TEST(FrameRendererCursor, GoesWithTheScreenWhenItsTrackIsHidden) {
    Scene scene({0.5, 0.5}, 0.4);
    QImage shown = scene.render(0.5);
    scene.project.tracks.screen.hidden = true;
    QImage hidden = scene.render(0.5);
    scene.project.tracks.screen.hidden = false;
    scene.project.cursor.visible = false;
    QImage off = scene.render(0.5);
    EXPECT_NE(shown, off);
    Rect r = scene.screenFrame();
    for (int y = int(r.y) + 20; y < int(r.maxY()) - 20; y += 3)
        for (int x = int(r.x) + 20; x < int(r.maxX()) - 20; x += 3) {
            ASSERT_EQ(hidden.pixel(x, y), qRgb(20, 40, 160)) << "no cursor without the screen, at " << x << "," << y;
            ASSERT_EQ(off.pixel(x, y), qRgb(0, 0, 0)) << "nor with the cursor off, nor its ripple, at " << x << "," << y;
        }
}
