#include "look/LookLibrary.h"
#include "package/ProjectPackage.h"
#include "recording/DesktopPicture.h"
#include "recording/RecordingProjectBuilder.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace recorder;
using recorder::test::TempDir;
using recorder::test::writeText;

namespace {

// What a recording of 10 s leaves: the screen from host second 100 on.
RecordingProjectBuilder::Results results(const std::filesystem::path& package) {
    ProjectPackage::createAssetsFolder(package);
    RecordingProjectBuilder::Results r;
    r.package = package;
    r.fps = 30;
    r.screen.videoURL = package / "assets" / "screen.mov";
    r.screen.duration = 10;
    r.screen.pixelSize = {2880, 1800};
    r.screen.captureRect = {0, 0, 1440, 900};
    r.screen.scaleFactor = 2;
    r.screen.firstSampleHostSeconds = 100;
    r.events.clicks.push_back({4.0, {0.5, 0.5}, ClickEvent::Button::left, true});
    return r;
}

const Asset* find(const Project& project, AssetKind kind) { return project.asset(kind); }

} // namespace

TEST(RecordingSessionProject, TracksAreAlignedByTheirFirstSamples) {
    TempDir dir;
    auto r = results(dir / "Recording.tidereel");
    r.camera = CapturedTrack{dir / "Recording.tidereel" / "assets" / "camera.mov", 9.5, 100.25};
    r.cameraPixelSize = {1280, 720};
    r.microphone = CapturedTrack{dir / "Recording.tidereel" / "assets" / "mic.m4a", 10.2, 99.9};
    Project project = RecordingProjectBuilder::build(r, nullptr);
    const Asset* camera = find(project, AssetKind::camera);
    ASSERT_TRUE(camera);
    EXPECT_DOUBLE_EQ(camera->startOffset, 0.25); // later than the screen
    EXPECT_EQ(camera->pixelSize, (Size{1280, 720}));
    EXPECT_EQ(camera->relativePath, "camera.mov");
    const Asset* mic = find(project, AssetKind::microphone);
    ASSERT_TRUE(mic);
    EXPECT_NEAR(mic->startOffset, -0.1, 1e-9); // earlier
    EXPECT_NE(project.camera.layout, CameraLayout::hidden);
    EXPECT_EQ(project.canvas, (CanvasSettings{1920, 1200, 30}));
    EXPECT_EQ(project.name, "Recording");
}

TEST(RecordingSessionProject, EmptyTracksAreLeftOutAndTheCameraLaneIsHiddenWithoutACamera) {
    TempDir dir;
    auto r = results(dir / "Take.tidereel");
    r.camera = CapturedTrack{dir / "camera.mov", 0, std::nullopt};
    r.microphone = CapturedTrack{dir / "Take.tidereel" / "assets" / "mic.m4a", 3, std::nullopt};
    Project project = RecordingProjectBuilder::build(r, nullptr);
    EXPECT_FALSE(find(project, AssetKind::camera));
    EXPECT_EQ(project.camera.layout, CameraLayout::hidden);
    ASSERT_TRUE(find(project, AssetKind::microphone));
    EXPECT_EQ(find(project, AssetKind::microphone)->startOffset, 0); // no first sample known
    EXPECT_FALSE(find(project, AssetKind::systemAudio)); // no file
}

TEST(RecordingSessionProject, TheWallpaperTheEventsAndTheZoomsComeAlong) {
    TempDir dir;
    auto r = results(dir / "Take.tidereel");
    writeText(dir / "desktop.png", "picture");
    EXPECT_EQ(DesktopPicture::copyInto(dir / "Take.tidereel" / "assets", dir / "desktop.png"), "wallpaper.png");
    Project project = RecordingProjectBuilder::build(r, nullptr);
    const Asset* events = find(project, AssetKind::events);
    ASSERT_TRUE(events);
    auto log = EventLog::read(ProjectPackage::assetURL(*events, r.package));
    ASSERT_TRUE(log);
    EXPECT_EQ(log->clicks, r.events.clicks);
    bool wallpaper = false;
    for (const auto& asset : project.assets)
        wallpaper |= asset.relativePath == "wallpaper.png" && asset.originalFilename == "wallpaper";
    EXPECT_TRUE(wallpaper);
    ASSERT_EQ(project.zooms.size(), 1u);
    EXPECT_NEAR(project.zooms[0].start, 4.0 - 0.72, 1e-9);
    EXPECT_NEAR(project.zooms[0].end, 4.0 - 0.72 + 2.8, 1e-9);
}

TEST(RecordingSessionProject, ANewRecordingTakesTheLookUsedLast) {
    TempDir dir;
    LookLibrary looks(dir / "support");
    Project styled("Styled", {}, "1.0");
    styled.style.padding = 0.2;
    styled.style.background = {BackgroundStyle::Gradient{}};
    looks.remember(styled, dir / "Styled.tidereel");
    Project project = RecordingProjectBuilder::build(results(dir / "Take.tidereel"), &looks);
    EXPECT_EQ(project.style.padding, 0.2);
    EXPECT_FALSE(std::holds_alternative<BackgroundStyle::Image>(project.style.background.value));
}

TEST(RecordingSessionProject, DesktopPictureSettingsAreReadAsFileURLs) {
    EXPECT_EQ(DesktopPicture::pathFromSetting("'file:///usr/share/backgrounds/a%20b.jpg'\n"),
              std::filesystem::path("/usr/share/backgrounds/a b.jpg"));
    EXPECT_EQ(DesktopPicture::pathFromSetting("'/srv/pic.png'"), std::filesystem::path("/srv/pic.png"));
    EXPECT_FALSE(DesktopPicture::pathFromSetting("''"));
    EXPECT_FALSE(DesktopPicture::pathFromSetting("'https://example.com/a.jpg'"));
    EXPECT_FALSE(DesktopPicture::copyInto("/nonexistent", std::filesystem::path("/nonexistent/a.jpg")));
}
