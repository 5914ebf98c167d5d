#include "frames/ProjectFrameSources.h"
#include "model/TextPreset.h"
#include "overlay/ShapeRenderer.h"

#include "OverlayFixtures.h"
#include "RenderFixtures.h"
#include "support/CliRunner.h"
#include "support/TestPackage.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace recorder;
using namespace recorder::test;

namespace {

const QColor backdrop(20, 40, 160);
const QColor green(30, 200, 60);

class OverlayLayer_ : public ::testing::Test {
protected:
    void SetUp() override { ensureGui(); }

    // A 200×100 green picture in a quarter-canvas box at (480, 270):
    // fitted at 2.4×, 480 by 240, centred 15 pixels down.
    MediaItem& addPicture(Rect frame = {0.25, 0.25, 0.25, 0.25}, QColor colour = green, QSize size = {200, 100}) {
        project.media.push_back(overlayItem(AssetKind::image, frame));
        inputs.mediaImages[project.media.back().id] = solidPicture(size.width(), size.height(), colour);
        return project.media.back();
    }

    QImage render(double time = 1) {
        inputs.time = time;
        return renderer.render(project, inputs, nullptr, 1920, 1080);
    }

    Project project = flatProject(1920, 1080, backdrop);
    FrameInputs inputs;
    FrameRenderer renderer;
};

} // namespace

TEST_F(OverlayLayer_, PictureIsFittedIntoItsBox) {
    addPicture();
    QImage frame = render();
    keepPicture(frame, "frame-picture");
    EXPECT_TRUE(near(at(frame, 720, 405), green));
    EXPECT_TRUE(near(at(frame, 482, 290), green));
    EXPECT_TRUE(near(at(frame, 720, 280), backdrop)) << "above the fitted picture, inside the box";
    EXPECT_TRUE(near(at(frame, 720, 530), backdrop));
}

TEST_F(OverlayLayer_, HighestZIndexEndsOnTop) {
    MediaItem& top = addPicture({0.25, 0.25, 0.25, 0.25}, QColor(250, 250, 0));
    top.zIndex = 2;
    addPicture({0.3, 0.3, 0.25, 0.25}, green).zIndex = 1;
    QImage frame = render();
    EXPECT_TRUE(near(at(frame, 800, 400), QColor(250, 250, 0)));
}

TEST_F(OverlayLayer_, ItemsWithoutAPictureAndBlurRegionsAreNotDrawnHere) {
    MediaItem& missing = addPicture();
    inputs.mediaImages.erase(missing.id);
    MediaItem& blur = addPicture({0.6, 0.6, 0.2, 0.2});
    blur.kind = AssetKind::blur;
    QImage frame = render();
    EXPECT_TRUE(near(at(frame, 720, 405), backdrop));
    EXPECT_FALSE(near(at(frame, 1340, 760), green, 20)) << "a blur region draws no picture of its own";
}

TEST_F(OverlayLayer_, RotationTurnsClockwiseAboutTheCentre) {
    // A 384×108 box at (768, 486) filled by its picture; centre (960, 540).
    MediaItem& item = addPicture({0.4, 0.45, 0.2, 0.1}, green, {384, 108});
    item.rotation = 90;
    QImage frame = render();
    keepPicture(frame, "frame-rotated");
    EXPECT_TRUE(near(at(frame, 960, 540 + 150), green));
    EXPECT_TRUE(near(at(frame, 960 + 150, 540), backdrop));
    item.rotation = 30;
    frame = render();
    // Clockwise on screen: the right end goes down.
    EXPECT_TRUE(near(at(frame, 960 + 150 * 0.866, 540 + 150 * 0.5), green));
    EXPECT_TRUE(near(at(frame, 960 + 150 * 0.866, 540 - 150 * 0.5), backdrop));
}

TEST_F(OverlayLayer_, FadesAndSlidesAtMidAnimation) {
    MediaItem& item = addPicture();
    item.inAnimation = MediaAnimation::slideUp;
    item.animationDuration = 1;
    item.start = 0;
    QImage frame = render(0.5);
    keepPicture(frame, "frame-slide-up-mid");
    // Opacity 0.875, 20.25 pixels above its place.
    QColor mixed = at(frame, 720, 405);
    EXPECT_NEAR(mixed.green(), 0.875 * 200 + 0.125 * 40, 3);
    EXPECT_NEAR(mixed.blue(), 0.875 * 60 + 0.125 * 160, 3);
    // The fitted picture spans y 285 to 525 at rest.
    EXPECT_FALSE(near(at(frame, 720, 500), backdrop, 20));
    EXPECT_TRUE(near(at(frame, 720, 510), backdrop)) << "the bottom edge moved up by 20 pixels";
    EXPECT_FALSE(near(at(frame, 720, 268), backdrop, 20)) << "and the top edge too";
    EXPECT_TRUE(near(at(frame, 720, 0), backdrop));
    EXPECT_TRUE(near(at(render(0.0), 720, 405), backdrop)) << "transparent at its start";
    EXPECT_TRUE(near(at(render(9.99), 720, 405), green));
}

TEST_F(OverlayLayer_, PopScalesAboutTheCentre) {
    MediaItem& item = addPicture();
    item.inAnimation = MediaAnimation::pop;
    item.animationDuration = 1;
    item.start = 0;
    QImage frame = render(0.1);
    double s = apply(Easing::spring, 0.1);
    double halfWidth = 240 * s;
    EXPECT_FALSE(near(at(frame, 720 - halfWidth + 4, 405), backdrop, 10));
    EXPECT_TRUE(near(at(frame, 720 - halfWidth - 4, 405), backdrop, 10));
}

TEST_F(OverlayLayer_, ShadowLiesOverTheItemAndBorderUnderIt) {
    MediaItem& item = addPicture();
    item.shadow = true;
    QImage frame = render();
    keepPicture(frame, "frame-shadow-over");
    QColor middle = at(frame, 720, 405);
    EXPECT_NEAR(middle.green(), 200 * 0.55, 8) << "the item darkens under its own shadow";
    item.shadow = false;
    item.borderWidth = 10;
    item.borderColor = {1, 1, 1, 1};
    item.cornerRadius = 40;
    frame = render();
    keepPicture(frame, "frame-border");
    EXPECT_TRUE(near(at(frame, 720, 280), QColor(255, 255, 255))) << "10 pixels above the fitted top";
    EXPECT_TRUE(near(at(frame, 720, 405), green));
    EXPECT_TRUE(near(at(frame, 481, 286), backdrop, 10)) << "the corner is rounded";
}

TEST_F(OverlayLayer_, OpacityAppliesToTheItemAsOnePicture) {
    MediaItem& item = addPicture();
    item.borderWidth = 10;
    item.borderColor = {1, 1, 1, 1};
    item.opacity = 0.5;
    QImage frame = render();
    QColor middle = at(frame, 720, 405);
    EXPECT_NEAR(middle.red(), (30 + 20) / 2.0, 3) << "no border showing through the picture";
    EXPECT_NEAR(middle.green(), (200 + 40) / 2.0, 3);
    QColor edge = at(frame, 720, 280);
    EXPECT_NEAR(edge.red(), (255 + 20) / 2.0, 3);
}

TEST_F(OverlayLayer_, ShapesAreDrawnInTheirPaddedBox) {
    ShapeSpec arrow;
    arrow.color = {1, 0, 0, 1};
    arrow.shadow = true;
    project.media.push_back(shapeItem(arrow, {0.25, 0.4, 0.5, 0.2}));
    QImage frame = render();
    keepPicture(frame, "frame-arrow");
    // Tip at (1440, 540): red just inside it, the backdrop just past it.
    EXPECT_GT(at(frame, 1434, 540).red(), 200);
    EXPECT_TRUE(near(at(frame, 1452, 540), backdrop, 12));
    EXPECT_GT(at(frame, 600, 540).red(), 200);
}

TEST_F(OverlayLayer_, DrawAnimationDrawsTheShapeOnInSteps) {
    ShapeSpec line;
    line.kind = ShapeKind::line;
    line.color = {1, 0, 0, 1};
    line.shadow = false;
    MediaItem item = shapeItem(line, {0.25, 0.4, 0.5, 0.2}, 0, 10);
    item.inAnimation = MediaAnimation::draw;
    item.animationDuration = 1;
    project.media.push_back(item);
    QImage half = render(0.5);
    keepPicture(half, "frame-line-half-drawn");
    EXPECT_GT(at(half, 900, 540).red(), 200);
    EXPECT_TRUE(near(at(half, 1000, 540), backdrop));
    EXPECT_TRUE(near(at(render(0.004), 482, 540), backdrop)) << "0.004 rounds to no drawing at all";
    EXPECT_GT(at(render(1.5), 1400, 540).red(), 200);
}

TEST_F(OverlayLayer_, AbsurdItemsDrawNothingOrLittleAndQuickly) {
    double nan = std::nan("");
    for (Rect frame : {Rect{0.1, 0.1, 0, 0}, Rect{0.5, 0.5, -0.3, -0.2}, Rect{nan, 0.1, 0.2, 0.2},
                       Rect{0.1, 0.1, 1e9, 1e9}, Rect{-1e12, 0, 0.2, 0.2}}) {
        addPicture(frame);
        ShapeSpec shape;
        shape.kind = ShapeKind::ellipse;
        shape.strokeWidth = 1e9;
        project.media.push_back(shapeItem(shape, frame));
    }
    MediaItem& wild = addPicture({0.1, 0.1, 0.2, 0.2});
    wild.rotation = nan;
    wild.opacity = nan;
    wild.cornerRadius = 1e300;
    wild.borderWidth = 1e300;
    auto started = std::chrono::steady_clock::now();
    QImage frame = render();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    ASSERT_EQ(frame.size(), QSize(1920, 1080));
    EXPECT_TRUE(near(at(frame, 1800, 1000), backdrop));
    // Not a timing test: a huge allocation or a raster of the whole 1e9 box would take minutes.
    EXPECT_LT(seconds, 30);
}

// The whole road: a package with a picture file, a text item and a shape,
// through the real recorder-cli.
TEST(OverlayRenderFrame, DrawsPicturesTextAndShapesFromAPackage) {
    TempDir dir;
    TestPackage package(dir.path(), {1280, 720, 30});
    Uuid picture = package.add(AssetKind::image, "picture.png", "-f lavfi -i color=c=0x20C040:s=160x90 -frames:v 1", 0).id;
    // Half a second of white, then orange: at 1 s the loop shows orange.
    Uuid gif = package.add(AssetKind::gif, "blink.gif",
                             "-f lavfi -i color=c=white:s=64x64:r=10:d=0.5 -f lavfi -i color=c=0xFF8000:s=64x64:r=10:d=1 "
                             "-filter_complex concat=n=2:v=1 -r 10",
                             1.5).id;
    Project& project = package.project();
    project.style.background = {BackgroundStyle::Solid{{0.08, 0.16, 0.63, 1}}};
    project.style.shadowOpacity = 0;
    MediaItem image = overlayItem(AssetKind::image, {0.05, 0.05, 0.25, 0.25});
    image.assetID = picture;
    MediaItem missing = overlayItem(AssetKind::image, {0.6, 0.05, 0.3, 0.25});
    MediaItem text = overlayItem(AssetKind::text, {0.35, 0.4, 0.3, 0.2});
    const TextPreset& marker = *TextPreset::find("marker");
    text.text = "Look \xF0\x9F\x8D\x8E";
    text.textStyle = marker.style;
    text.textColor = marker.textColor;
    ShapeSpec arrow;
    arrow.color = {1, 0, 0, 1};
    MediaItem shape = shapeItem(arrow, {0.1, 0.75, 0.8, 0.15});
    MediaItem animation = overlayItem(AssetKind::gif, {0.8, 0.6, 0.1, 0.1});
    animation.assetID = gif;
    project.media = {image, missing, text, shape, animation};
    package.save();
    auto out = dir / "frame.png";
    CliRun run = runCli("render-frame '" + package.path().string() + "' --time 1 --out '" + out.string() + "'", dir);
    ASSERT_EQ(run.status, 0) << run.err;
    QImage frame(QString::fromStdString(out.string()));
    keepPicture(frame, "cli-render-frame");
    ASSERT_EQ(frame.size(), QSize(1280, 720));
    QColor greenPicture = frame.pixelColor(64 + 160, 36 + 90);
    EXPECT_NEAR(greenPicture.green(), 0xC0, 6);
    EXPECT_NEAR(greenPicture.red(), 0x20, 6);
    EXPECT_NEAR(frame.pixelColor(1000, 100).blue(), 161, 3) << "the missing picture draws nothing";
    int yellow = countPixels(frame, QRect(448, 288, 384, 144),
                             [](QColor c) { return c.red() > 240 && c.green() > 200 && c.blue() < 60; });
    EXPECT_GT(yellow, 2000) << "the marker's box";
    int apple = countPixels(frame, QRect(448, 288, 384, 144),
                            [](QColor c) { return c.red() > 170 && c.green() < 90 && c.blue() < 90; });
    EXPECT_GT(apple, 20) << "the emoji in colour";
    EXPECT_GT(frame.pixelColor(640, 594).red(), 200) << "the arrow across the bottom";
    QColor orange = frame.pixelColor(1024 + 64, 432 + 36);
    EXPECT_GT(orange.red(), 230);
    EXPECT_NEAR(orange.green(), 0x80, 30) << "the GIF's frame at 1 s";
}

// An unchanged text item costs a draw, not a layout: its raster is kept
// while the text and look stay the same.
TEST(OverlayTextSource, RasterIsRemadeOnlyWhenTheTextChanges) {
    ensureGui();
    TempDir dir;
    TestPackage package(dir.path());
    Project& project = package.project();
    MediaItem text = overlayItem(AssetKind::text, {0.1, 0.1, 0.3, 0.1});
    text.text = "Hello";
    project.media = {text};
    ProjectFrameSources sources(package.path());
    SourceImage first = sources.inputs(project, 1).mediaImages.at(text.id);
    SourceImage again = sources.inputs(project, 2).mediaImages.at(text.id);
    ASSERT_FALSE(first.isNull());
    EXPECT_EQ(first.image().constBits(), again.image().constBits());
    project.media[0].text = "Hello there";
    SourceImage changed = sources.inputs(project, 2).mediaImages.at(text.id);
    EXPECT_GT(changed.width(), first.width());
    project.media[0].textStyle = TextPreset::find("pill")->style;
    EXPECT_GT(sources.inputs(project, 2).mediaImages.at(text.id).height(), changed.height()) << "the box's padding";
}
