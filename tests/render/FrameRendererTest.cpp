#include "RenderFixtures.h"
#include "compose/FramePlan.h"
#include "motion/Layout.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace recorder;
using namespace recorder::test;

namespace {

const QColor background(20, 40, 160);

QImage render(const Project& project, const FrameInputs& inputs, int width = 1920, int height = 1080) {
    return FrameRenderer().render(project, inputs, nullptr, width, height);
}

FrameInputs withScreen(SourceImage screen, double time = 0) {
    FrameInputs inputs;
    inputs.time = time;
    inputs.screen = std::move(screen);
    return inputs;
}

Rect screenFrame(int width, int height, double aspect, double padding = 0.08) {
    return Layout::screenFrame(CameraLayout::hidden, width, height, aspect, padding);
}

} // namespace

TEST(FrameRendererScreen, LandsInItsScreenFrameWithTheBackgroundAround) {
    QImage frame = render(flatProject(), withScreen(solidPicture(1600, 1000, Qt::white)));
    keepForLooking(frame, "screen-in-frame");
    Rect r = screenFrame(1920, 1080, 1.6);
    ASSERT_EQ(frame.size(), QSize(1920, 1080));
    EXPECT_EQ(at(frame, r.midX(), r.midY()), QColor(Qt::white));
    EXPECT_EQ(at(frame, r.x + 2, r.midY()), QColor(Qt::white));
    EXPECT_EQ(at(frame, r.maxX() - 2, r.midY()), QColor(Qt::white));
    EXPECT_EQ(at(frame, r.midX(), r.y + 1), QColor(Qt::white));
    EXPECT_EQ(at(frame, r.x - 2, r.midY()), background);
    EXPECT_EQ(at(frame, r.maxX() + 1, r.midY()), background);
    EXPECT_EQ(at(frame, r.midX(), r.maxY() + 1), background);
    EXPECT_EQ(at(frame, 0, 0), background);
}

TEST(FrameRendererScreen, HasRoundedAntiAliasedCorners) {
    QImage frame = render(flatProject(), withScreen(solidPicture(1600, 1000, Qt::white)));
    Rect r = screenFrame(1920, 1080, 1.6);
    EXPECT_EQ(at(frame, r.x + 1, r.y + 1), background) << "the corner outside the 16-pixel arc is transparent";
    EXPECT_EQ(at(frame, r.maxX() - 2, r.maxY() - 2), background);
    // Along the arc pixels are part screen, part background.
    int soft = 0;
    for (int y = int(r.y); y < int(r.y) + 16; ++y)
        for (int x = int(r.x); x < int(r.x) + 16; ++x) soft += at(frame, x, y).red() > 60 && at(frame, x, y).red() < 215;
    EXPECT_GE(soft, 10);
}

TEST(FrameRendererScreen, EdgesNeverTakeInTheBackgroundAtAnyScale) {
    Project project = flatProject(1920, 1080, Qt::black);
    project.style.cornerRadius = 0;
    project.zooms.push_back(zoomSegment(1, 3, {0.21, 0.17, 0.6, 0.6}, 0.3));
    // 0.36×, 0.5×, and zoomed to 0.6× and 0.84×: every path through the scaler.
    for (int width : {4000, 2880}) {
        for (double time : {0.0, 2.0}) {
            QImage frame = render(project, withScreen(solidPicture(width, width * 10 / 16, Qt::white), time));
            for (int y = 0; y < 1080; ++y) {
                const auto* row = reinterpret_cast<const QRgb*>(frame.constScanLine(y));
                if (row[960] != 0xFFFFFFFF) continue;
                int first = 0, last = 1919;
                while (row[first] == 0xFF000000) ++first;
                while (row[last] == 0xFF000000) --last;
                // One soft pixel at most at each side, then white right up to it.
                ASSERT_EQ(row[std::min(first + 1, 1919)], 0xFFFFFFFF) << width << " at " << time << ", row " << y;
                ASSERT_EQ(row[std::max(last - 1, 0)], 0xFFFFFFFF) << width << " at " << time << ", row " << y;
            }
            for (int x = 0; x < 1920; x += 7) {
                if (frame.pixel(x, 540) != 0xFFFFFFFF) continue;
                int first = 0;
                while (frame.pixel(x, first) == 0xFF000000) ++first;
                ASSERT_EQ(frame.pixel(x, std::min(first + 1, 1079)), 0xFFFFFFFF) << width << " at " << time << ", column " << x;
            }
        }
    }
}

TEST(FrameRendererScreen, DrawsNothingWhenItsTrackIsHidden) {
    Project project = flatProject();
    project.tracks.screen.hidden = true;
    QImage frame = render(project, withScreen(solidPicture(1600, 1000, Qt::white)));
    EXPECT_EQ(at(frame, 960, 540), background);
}

TEST(FrameRendererScreen, CornerRadiusAndShadowFollowTheCanvasHeight) {
    Project project = flatProject();
    Rect full = screenFrame(1920, 1080, 1.6), half = screenFrame(960, 540, 1.6);
    QImage big = render(project, withScreen(solidPicture(1600, 1000, Qt::white)));
    QImage small = render(project, withScreen(solidPicture(1600, 1000, Qt::white)), 960, 540);
    // Three pixels in from the corner: outside a 16-pixel arc, inside an 8-pixel one.
    EXPECT_EQ(at(big, full.x + 3, full.y + 3), background);
    EXPECT_GT(at(small, half.x + 3.5, half.y + 3.5).red(), 200);
}

TEST(FrameRendererShadow, FallsBelowTheScreenAndLeavesTheFarCanvasAlone) {
    Project project = flatProject(1920, 1080, QColor(200, 200, 200));
    project.style.shadowOpacity = 0.45;
    QImage frame = render(project, withScreen(solidPicture(1600, 1000, Qt::white)));
    keepForLooking(frame, "shadow");
    Rect r = screenFrame(1920, 1080, 1.6);
    int below = at(frame, r.midX(), r.maxY() + 12).red(), above = at(frame, r.midX(), r.y - 12).red();
    EXPECT_LT(below, 170);
    EXPECT_LT(below, above) << "the offset moves the shadow down";
    EXPECT_EQ(at(frame, 3, 3), QColor(200, 200, 200));
}

TEST(FrameRendererBackground, GradientRunsFromTheFirstColourAtTopRightAt135Degrees) {
    Project project("Test", {1920, 1080, 60}, "1.0");
    QImage frame = render(project, FrameInputs{});
    keepForLooking(frame, "gradient-135");
    EXPECT_TRUE(near(at(frame, 1919, 0), QColor(0xD4, 0xFC, 0x79))) << describe(at(frame, 1919, 0));
    EXPECT_TRUE(near(at(frame, 0, 1079), QColor(0x96, 0xE6, 0xA1))) << describe(at(frame, 0, 1079));
    QColor middle = at(frame, 0, 0);
    EXPECT_GT(middle.red(), 0x96 + 5);
    EXPECT_LT(middle.red(), 0xD4 - 5);
}

TEST(FrameRendererBackground, GradientAtZeroDegreesRunsLeftToRightAndAtNinetyTopToBottom) {
    Project project("Test", {1920, 1080, 60}, "1.0");
    RGBAColor red{1, 0, 0, 1}, blue{0, 0, 1, 0.2};
    project.style.background = {BackgroundStyle::Gradient{red, blue, 0}};
    QImage across = render(project, FrameInputs{});
    EXPECT_TRUE(near(at(across, 0, 540), Qt::red));
    EXPECT_TRUE(near(at(across, 1919, 540), Qt::blue)) << "colours are drawn opaque whatever their alpha";
    project.style.background = {BackgroundStyle::Gradient{red, blue, 90}};
    QImage down = render(project, FrameInputs{});
    EXPECT_TRUE(near(at(down, 960, 0), Qt::red));
    EXPECT_TRUE(near(at(down, 960, 1079), Qt::blue));
}

TEST(FrameRendererBackground, AMissingPictureShowsTheDarkFallback) {
    Project project = flatProject();
    project.style.background = {BackgroundStyle::Image{Uuid::random()}};
    QImage frame = render(project, FrameInputs{});
    EXPECT_TRUE(near(at(frame, 5, 5), QColor::fromRgbF(0.1f, 0.1f, 0.12f), 1)) << describe(at(frame, 5, 5));
}

TEST(FrameRendererBackground, APictureFillsTheCanvasAndIsCropped) {
    Project project = flatProject();
    project.style.background = {BackgroundStyle::Image{Uuid::random()}};
    FrameRenderer renderer;
    renderer.setBackgroundImage(halvesPicture(400, 400, Qt::red, Qt::green));
    QImage frame = renderer.render(project, FrameInputs{}, nullptr, 1920, 1080);
    EXPECT_TRUE(near(at(frame, 10, 10), Qt::red));
    EXPECT_TRUE(near(at(frame, 1910, 1070), Qt::green));
}

TEST(FrameRendererLetterbox, ASquareRequestOfAWideCanvasGetsBarsOfBackgroundAndNoZoomInThem) {
    Project project = flatProject();
    project.style.padding = 0;
    project.zooms.push_back(zoomSegment(0, 10, {0.25, 0.25, 0.5, 0.5}, 0.5));
    QImage frame = render(project, withScreen(solidPicture(1920, 1080, Qt::white), 5), 1080, 1080);
    keepForLooking(frame, "letterbox");
    ASSERT_EQ(frame.size(), QSize(1080, 1080));
    // The picture is 1080 by round(1080 / 1.777…) = 608, from y = 236.
    EXPECT_EQ(at(frame, 540, 235), background);
    EXPECT_EQ(at(frame, 540, 236), QColor(Qt::white));
    EXPECT_EQ(at(frame, 540, 843), QColor(Qt::white));
    EXPECT_EQ(at(frame, 540, 844), background);
    EXPECT_EQ(at(frame, 5, 100), background);
}

TEST(FrameRendererLetterbox, ARatioOffByLessThanThreeThousandthsIsDrawnAsItIs) {
    Project project = flatProject(1000, 1000);
    project.style.padding = 0;
    FrameInputs inputs = withScreen(solidPicture(1000, 1000, Qt::white));
    // As is, the square screen is centred at x = 1; letterboxed, the picture starts at x = 2.
    EXPECT_EQ(at(render(project, inputs, 1002, 1000), 1, 500), QColor(Qt::white));
    EXPECT_EQ(at(render(project, inputs, 1004, 1000), 1, 500), background);
    EXPECT_EQ(at(render(project, inputs, 1004, 1000), 2, 500), QColor(Qt::white));
}

TEST(FrameRendererZoom, KeepsItsAnchorAndCoversTheCanvas) {
    Project project = flatProject();
    project.zooms.push_back(zoomSegment(1, 5, {0.5, 0.5, 0.5, 0.5}, 0.5));
    QImage picture(1600, 1000, QImage::Format_ARGB32_Premultiplied);
    {
        QPainter painter(&picture);
        painter.fillRect(0, 0, 800, 500, Qt::red);
        painter.fillRect(800, 0, 800, 500, Qt::green);
        painter.fillRect(0, 500, 800, 500, Qt::yellow);
        painter.fillRect(800, 500, 800, 500, Qt::magenta);
    }
    SourceImage screen(picture);
    QImage plain = render(project, withScreen(screen, 0));
    QImage zoomed = render(project, withScreen(screen, 3));
    keepForLooking(zoomed, "zoom-plateau");
    Rect r = screenFrame(1920, 1080, 1.6);
    ZoomTransform map = Layout::zoomTransform({0.5, 0.5, 0.5, 0.5}, {0.5, 0.5, 0.5, 0.5}, r, 1920, 1080);
    ASSERT_NEAR(map.scale, 2, 1e-9);
    int compared = 0;
    for (double qx = 40; qx < 1920; qx += 160) {
        for (double qy = 30; qy < 1080; qy += 150) {
            double px = (qx - map.tx) / map.scale, py = (qy - map.ty) / map.scale;
            bool nearSeam = std::fabs(px - r.midX()) < 4 || std::fabs(py - r.midY()) < 4 || std::fabs(px - r.maxX()) < 4 ||
                            std::fabs(py - r.maxY()) < 4 || std::fabs(px - r.x) < 4 || std::fabs(py - r.y) < 4;
            if (nearSeam) continue;
            EXPECT_TRUE(near(at(zoomed, qx, qy), at(plain, px, py), 3)) << qx << "," << qy;
            ++compared;
        }
    }
    EXPECT_GT(compared, 50);
    Point focus = Layout::zoomFocus(map.scale, map.tx, map.ty, 1920, 1080);
    EXPECT_TRUE(near(at(zoomed, focus.x - 20, focus.y - 20), at(plain, focus.x - 10, focus.y - 10), 3));
    for (int y = 0; y < 1080; ++y) ASSERT_EQ(qAlpha(zoomed.pixel(0, y)), 255);
}

TEST(FrameRendererMotionBlur, RunsNoFilterOnceTheZoomReachesItsPlateau) {
    Project project = flatProject();
    project.zooms.push_back(zoomSegment(0, 4, {0.2, 0.2, 0.5, 0.5}, 1));
    FrameInputs inputs = withScreen(halvesPicture(1600, 1000, Qt::black, Qt::white), 2);
    QImage sharp = render(project, inputs);
    project.style.motionBlur = 0.5;
    QImage blurred = render(project, inputs);
    ASSERT_EQ(sharp.sizeInBytes(), blurred.sizeInBytes());
    EXPECT_EQ(std::memcmp(sharp.constBits(), blurred.constBits(), std::size_t(sharp.sizeInBytes())), 0);
}

TEST(FrameRendererMotionBlur, SmearsTheStageMidRampAwayFromTheFocus) {
    Project project = flatProject();
    project.zooms.push_back(zoomSegment(0, 4, {0.1, 0.1, 0.5, 0.5}, 1));
    QImage stripes(1600, 1000, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < 1000; ++y)
        for (int x = 0; x < 1600; ++x) stripes.setPixel(x, y, (x / 12) & 1 ? 0xFFFFFFFF : 0xFF000000);
    FrameInputs inputs = withScreen(SourceImage(stripes), 0.5);
    QImage sharp = render(project, inputs);
    project.style.motionBlur = 1;
    QImage blurred = render(project, inputs);
    keepForLooking(blurred, "motion-blur");
    FramePlan plan = FramePlan::make(project, 0.5, {QSizeF(1600, 1000), QSizeF(), false}, 1920, 1080);
    ASSERT_TRUE(plan.zoomBlur);
    ASSERT_FALSE(plan.panBlur) << "a ramp about a fixed anchor doesn't pan";
    // The blur runs along lines through the focus: across vertical stripes on its own row.
    auto contrast = [&](const QImage& image, int x0) {
        int low = 255, high = 0, y0 = int(plan.motion.focus.y) - 10;
        for (int y = y0; y < y0 + 20; ++y)
            for (int x = x0; x < x0 + 60; ++x) low = std::min(low, qGreen(image.pixel(x, y))), high = std::max(high, qGreen(image.pixel(x, y)));
        return high - low;
    };
    int far = 1840, close = int(plan.motion.focus.x) + 10;
    EXPECT_GT(contrast(sharp, far), 200);
    EXPECT_LT(contrast(blurred, far), 80) << "far from the focus the stripes smear into grey";
    EXPECT_GT(contrast(blurred, close), 150) << "near the focus they stay";
}

TEST(FrameRendererCamera, StandsWhereEachLayoutPutsIt) {
    const CameraLayout layouts[] = {CameraLayout::bubbleBottomRight, CameraLayout::bubbleBottomLeft,
                                    CameraLayout::bubbleTopRight, CameraLayout::bubbleTopLeft, CameraLayout::sideBySide};
    for (CameraLayout layout : layouts) {
        Project project = flatProject();
        project.camera.layout = layout;
        project.camera.shadow = false;
        FrameInputs inputs;
        inputs.camera = solidPicture(1280, 720, Qt::green);
        QImage frame = render(project, inputs);
        Rect r = *Layout::cameraRect(layout, 1920, 1080, 0.24, 16.0 / 9.0, Layout::cameraMargin(1920, 1080));
        EXPECT_EQ(at(frame, r.midX(), r.midY()), QColor(Qt::green)) << enumName(layout);
        EXPECT_EQ(at(frame, r.x - 4, r.midY()), background) << enumName(layout);
        EXPECT_EQ(at(frame, r.midX(), r.maxY() + 4), background) << enumName(layout);
        if (layout != CameraLayout::sideBySide) {
            EXPECT_EQ(at(frame, r.x + 3, r.y + 3), background) << "a circle leaves its box's corners " << enumName(layout);
        }
    }
}

TEST(FrameRendererCamera, FullScreenCoversTheCanvasAndHidesTheScreen) {
    Project project = flatProject();
    project.camera.layout = CameraLayout::fullScreen;
    FrameInputs inputs = withScreen(solidPicture(1600, 1000, Qt::white));
    inputs.camera = solidPicture(1280, 720, Qt::green);
    QImage frame = render(project, inputs);
    EXPECT_EQ(at(frame, 0, 0), QColor(Qt::green));
    EXPECT_EQ(at(frame, 1919, 1079), QColor(Qt::green));
    FramePlan plan = FramePlan::make(project, 0, {QSizeF(1600, 1000), QSizeF(1280, 720), false}, 1920, 1080);
    EXPECT_FALSE(plan.drawsScreen);
    EXPECT_FALSE(plan.cameraShadow) << "a camera at rest in full screen casts no shadow";
}

TEST(FrameRendererCamera, IsMirroredUnlessItIsAnAvatarOrMirroringIsOff) {
    Project project = flatProject();
    project.camera.shadow = false;
    Rect r = *Layout::cameraRect(CameraLayout::bubbleBottomRight, 1920, 1080, 0.24, 16.0 / 9.0,
                                 Layout::cameraMargin(1920, 1080));
    FrameInputs inputs;
    inputs.camera = halvesPicture(1280, 720, Qt::red, Qt::blue);
    auto leftSide = [&](const Project& p, const FrameInputs& in) { return at(render(p, in), r.x + r.width * 0.3, r.midY()); };
    EXPECT_EQ(leftSide(project, inputs), QColor(Qt::blue)) << "mirrored, like a looking glass";
    inputs.cameraIsAvatar = true;
    EXPECT_EQ(leftSide(project, inputs), QColor(Qt::red)) << "an avatar is never mirrored";
    inputs.cameraIsAvatar = false;
    project.camera.mirrored = false;
    EXPECT_EQ(leftSide(project, inputs), QColor(Qt::red));
}

TEST(FrameRendererCamera, StaysPutWhileTheScreenZoomsBehindIt) {
    Project project = flatProject();
    project.camera.shadow = false;
    project.zooms.push_back(zoomSegment(0, 4, {0.1, 0.1, 0.5, 0.5}, 0.5));
    FrameInputs inputs = withScreen(solidPicture(1600, 1000, Qt::white), 2);
    inputs.camera = solidPicture(1280, 720, Qt::green);
    QImage frame = render(project, inputs);
    Rect r = *Layout::cameraRect(CameraLayout::bubbleBottomRight, 1920, 1080, 0.24, 16.0 / 9.0,
                                 Layout::cameraMargin(1920, 1080));
    EXPECT_EQ(at(frame, r.midX(), r.midY()), QColor(Qt::green));
    EXPECT_EQ(at(frame, r.x + 3, r.y + 3), QColor(Qt::white)) << "the zoomed screen shows around the bubble";
}

TEST(FrameRendererCamera, CastsItsShadowBelowTheBubble) {
    Project project = flatProject(1920, 1080, QColor(200, 200, 200));
    FrameInputs inputs;
    inputs.camera = solidPicture(1280, 720, Qt::green);
    QImage frame = render(project, inputs);
    Rect r = *Layout::cameraRect(CameraLayout::bubbleBottomRight, 1920, 1080, 0.24, 16.0 / 9.0,
                                 Layout::cameraMargin(1920, 1080));
    EXPECT_LT(at(frame, r.midX(), r.maxY() + 5).red(), 185);
    EXPECT_EQ(at(frame, 5, 5), QColor(200, 200, 200));
}

TEST(FrameRenderer, RefusesSizesBelowOnePixel) {
    EXPECT_TRUE(FrameRenderer().render(flatProject(), FrameInputs{}, nullptr, 0, 0).isNull());
    EXPECT_TRUE(FrameRenderer().render(flatProject(), FrameInputs{}, nullptr, 100, -3).isNull());
}
