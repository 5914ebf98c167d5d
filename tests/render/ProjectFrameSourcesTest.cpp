#include "RenderFixtures.h"
#include "frames/ProjectFrameSources.h"
#include "support/TempDir.h"
#include "support/TestPackage.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace recorder;
using namespace recorder::test;

namespace {

// The number makeNumberedVideo drew into a frame (luma 19 + 3·N).
int frameNumber(const SourceImage& image) {
    if (image.isNull()) return -2;
    return int(std::lround(qRed(image.image().pixel(image.width() / 2, image.height() / 2)) / (3 * 255.0 / 219.0))) - 1;
}

class ProjectFrameSourcesTest : public ::testing::Test {
protected:
    ProjectFrameSourcesTest() : package(dir.path()) {
        makeNumberedVideo(ProjectPackage::assetsURL(package.path()) / "screen.mov", 60);
        makeNumberedVideo(ProjectPackage::assetsURL(package.path()) / "camera.mov", 60);
        const Asset& screen = package.addExisting(AssetKind::screen, "screen.mov", 2);
        package.addExisting(AssetKind::camera, "camera.mov", 2, 0.5);
        package.clipOver(screen, 0, 2);
    }

    TempDir dir;
    TestPackage package;
};

} // namespace

TEST_F(ProjectFrameSourcesTest, ReadsTheScreenAtSourceTimeAndTheCameraAtItsOwnOffset) {
    ProjectFrameSources sources(package.path());
    FrameInputs inputs = sources.inputs(package.project(), 1.01);
    EXPECT_EQ(frameNumber(inputs.screen), 30);
    EXPECT_EQ(frameNumber(inputs.camera), 15) << "the camera file starts half a second into the recording";
    EXPECT_FALSE(inputs.cameraIsAvatar);
    EXPECT_TRUE(inputs.screen.isOpaque());
}

TEST_F(ProjectFrameSourcesTest, GivesNeitherScreenNorCameraOutsideTheClips) {
    ProjectFrameSources sources(package.path());
    FrameInputs inputs = sources.inputs(package.project(), 5);
    EXPECT_TRUE(inputs.screen.isNull());
    EXPECT_TRUE(inputs.camera.isNull());
    EXPECT_DOUBLE_EQ(inputs.time, 5);
}

TEST_F(ProjectFrameSourcesTest, ShowsTheAvatarInsteadOfTheCameraWhenAsked) {
    const Asset& avatar = package.add(AssetKind::image, "avatar.png", "-f lavfi -i color=c=blue:s=50x50:d=0.1 -frames:v 1", 0);
    package.project().camera.avatarAssetID = avatar.id;
    package.project().camera.showAvatar = true;
    ProjectFrameSources sources(package.path());
    FrameInputs inputs = sources.inputs(package.project(), 1);
    ASSERT_FALSE(inputs.camera.isNull());
    EXPECT_TRUE(inputs.cameraIsAvatar);
    EXPECT_EQ(inputs.camera.width(), 50);
}

TEST_F(ProjectFrameSourcesTest, LeavesOutAFileThatIsMissing) {
    std::filesystem::remove(ProjectPackage::assetsURL(package.path()) / "screen.mov");
    ProjectFrameSources sources(package.path());
    FrameInputs inputs = sources.inputs(package.project(), 1);
    EXPECT_TRUE(inputs.screen.isNull());
    EXPECT_FALSE(inputs.camera.isNull());
}

TEST_F(ProjectFrameSourcesTest, GivesEachVisibleMediaItemItsFrameAtItsOwnTime) {
    const Asset& clip = package.add(AssetKind::video, "overlay.mp4", "-f lavfi -i color=c=red:s=32x32:r=30:d=1", 1);
    MediaItem item;
    item.id = Uuid::random();
    item.assetID = clip.id;
    item.kind = AssetKind::video;
    item.start = 0.5;
    item.end = 1.5;
    package.project().media.push_back(item);
    ProjectFrameSources sources(package.path());
    EXPECT_EQ(sources.inputs(package.project(), 1).mediaImages.count(item.id), 1u);
    EXPECT_EQ(sources.inputs(package.project(), 1.7).mediaImages.count(item.id), 0u);
}

TEST_F(ProjectFrameSourcesTest, HandsTheRendererTheBackgroundPicture) {
    const Asset& picture = package.add(AssetKind::image, "wall.png", "-f lavfi -i color=c=0x00FF00:s=64x36:d=0.1 -frames:v 1", 0);
    package.project().style.background = {BackgroundStyle::Image{picture.id}};
    ProjectFrameSources sources(package.path());
    FrameRenderer renderer;
    sources.prepareBackground(renderer, package.project());
    QImage frame = renderer.render(package.project(), FrameInputs{}, nullptr, 640, 360);
    EXPECT_TRUE(near(at(frame, 5, 5), QColor(0, 255, 0), 3)) << describe(at(frame, 5, 5));
}
