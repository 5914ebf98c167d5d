#include "package/ProjectPackage.h"
#include "support/CliRunner.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/wait.h>

using namespace recorder;
using nlohmann::json;
using recorder::test::readText;
using recorder::test::TempDir;
using recorder::test::writeText;

namespace {

using recorder::test::CliRun;

CliRun frameInfo(const std::filesystem::path& package, const std::string& options, const TempDir& dir) {
    return recorder::test::runCli("frame-info '" + package.string() + "' " + options, dir);
}

json frameAt(const std::filesystem::path& package, const std::string& options, const TempDir& dir) {
    CliRun run = frameInfo(package, options, dir);
    EXPECT_EQ(run.status, 0) << run.err;
    return json::parse(run.out);
}

// A screen filling the canvas edge to edge (no padding), 2 s of lead and a
// 20 s clip from source 5, with one zoom into the bottom right quarter.
Project screenProject() {
    Project project("Frames", CanvasSettings{1920, 1080, 60}, "1.0");
    Asset screen;
    screen.id = Uuid::random();
    screen.relativePath = "screen.mov";
    screen.pixelSize = Size{1920, 1080};
    project.assets.push_back(screen);
    project.clips.push_back({Uuid::random(), screen.id, 5, 25, 1});
    project.screenStart = 2;
    project.style.padding = 0;
    ZoomSegment zoom;
    zoom.id = Uuid::random();
    zoom.start = 4;
    zoom.end = 10;
    zoom.rect = {0.5, 0.5, 0.5, 0.5};
    zoom.inDuration = zoom.outDuration = 1;
    project.zooms.push_back(zoom);
    return project;
}

std::filesystem::path saved(const Project& project, const TempDir& dir) {
    auto package = dir / "Frames.tidereel";
    ProjectPackage::save(project, package);
    return package;
}

} // namespace

TEST(CliFrameInfo, OnAZoomsPlateauGivesTheMapTheClipAndTheRestingCameraForTheCanvasAsked) {
    TempDir dir;
    Project project = screenProject();
    auto package = saved(project, dir);
    json frame = frameAt(package, "--time 6", dir);
    EXPECT_EQ(frame["time"], 6);
    EXPECT_EQ(frame["canvas"], json::parse(R"({"width":1920,"height":1080})"));
    EXPECT_EQ(frame["source"]["clipID"], project.clips[0].id.string());
    EXPECT_EQ(frame["source"]["time"], 9);
    json zoom = frame["zoom"];
    EXPECT_EQ(zoom["id"], project.zooms[0].id.string());
    EXPECT_EQ(zoom["rect"], zoom["target"]);
    EXPECT_EQ(zoom["scale"], 2);
    EXPECT_EQ(zoom["tx"], -1920);
    EXPECT_EQ(zoom["ty"], -1080);
    EXPECT_EQ(zoom["focus"], json::parse(R"({"x":1920,"y":1080})"));
    EXPECT_EQ(zoom["zoomAmount"], 0);
    EXPECT_EQ(zoom["panAmount"], 0);
    json camera = frame["camera"];
    EXPECT_EQ(camera["from"], "hidden") << "a project without a camera has it hidden";
    EXPECT_EQ(camera["to"], "hidden");
    EXPECT_TRUE(camera["rect"].is_null());
    EXPECT_EQ(camera["screenFrame"], json::parse(R"({"x":0,"y":0,"width":1920,"height":1080})"));
    EXPECT_EQ(camera["screenVisible"], true);
    EXPECT_EQ(camera["progress"], 1);

    json smaller = frameAt(package, "--time 6 --size 1280x720", dir);
    EXPECT_EQ(smaller["canvas"], json::parse(R"({"width":1280,"height":720})"));
    EXPECT_EQ(smaller["zoom"]["tx"], -1280);
}

TEST(CliFrameInfo, OutsideZoomsAndClipsTheirKeysAreNull) {
    TempDir dir;
    auto package = saved(screenProject(), dir);
    json lead = frameAt(package, "--time 1", dir);
    EXPECT_TRUE(lead["source"].is_null()) << "the leading gap has no source";
    EXPECT_TRUE(lead["zoom"].is_null());
    json zoomEnd = frameAt(package, "--time 10", dir);
    EXPECT_TRUE(zoomEnd["zoom"].is_null()) << "a segment is half open";
    EXPECT_FALSE(zoomEnd["source"].is_null());
}

TEST(CliFrameInfo, DuringARampTheBlurAmountsFollowTheStylesMotionBlur) {
    TempDir dir;
    Project project = screenProject();
    auto package = saved(project, dir);
    json ramp = frameAt(package, "--time 4.5", dir)["zoom"];
    EXPECT_GT(ramp["zoomAmount"].get<double>(), 0);
    EXPECT_LT(ramp["scale"].get<double>(), 2);
    EXPECT_EQ(ramp["target"], json::parse(R"({"x":0.5,"y":0.5,"width":0.5,"height":0.5})"));
    project.style.motionBlur = 0;
    ProjectPackage::save(project, package);
    json still = frameAt(package, "--time 4.5", dir)["zoom"];
    EXPECT_EQ(still["zoomAmount"], 0);
    EXPECT_EQ(still["scale"], ramp["scale"]);
}

TEST(CliFrameInfo, TheCameraMovesBetweenLayoutsWithItsOwnAspect) {
    TempDir dir;
    Project project = screenProject();
    Asset camera;
    camera.id = Uuid::random();
    camera.kind = AssetKind::camera;
    camera.relativePath = "camera.mov";
    camera.pixelSize = Size{1000, 1000};
    project.assets.push_back(camera);
    project.style.padding = 0.08;
    project.camera.layout = CameraLayout::bubbleBottomRight;
    project.camera.keyframes = {{Uuid::random(), 3, CameraLayout::sideBySide}};
    auto package = saved(project, dir);

    json moving = frameAt(package, "--time 3.3", dir)["camera"];
    EXPECT_EQ(moving["from"], "bubbleBottomRight");
    EXPECT_EQ(moving["to"], "sideBySide");
    EXPECT_NEAR(moving["progress"].get<double>(), 0.5, 1e-12);
    json resting = frameAt(package, "--time 4", dir)["camera"];
    EXPECT_EQ(resting["from"], "sideBySide");
    EXPECT_NEAR(resting["rect"]["height"].get<double>(), 1920 * 0.32, 1e-9) << "a square camera";

    project.tracks.camera.hidden = true;
    ProjectPackage::save(project, package);
    EXPECT_EQ(frameAt(package, "--time 3.3", dir)["camera"]["to"], "hidden");
}

TEST(CliFrameInfo, HugeNumbersInAProjectStillGiveAnAnswer) {
    TempDir dir;
    Project project = screenProject();
    project.zooms[0].start = -1e308;
    project.zooms[0].end = 1e308;
    project.zooms[0].inDuration = 1e308;
    project.zooms[0].rect = {1e308, -1e308, 1e-308, 1e308};
    project.clips[0].speed = 1e-308;
    project.camera.bubbleSize = 1e308;
    project.camera.transitionDuration = 1e308;
    project.camera.keyframes = {{Uuid::random(), -1e308, CameraLayout::fullScreen}};
    Asset camera = project.assets[0];
    camera.kind = AssetKind::camera;
    camera.pixelSize = Size{0, 0};
    project.assets.push_back(camera);
    auto package = saved(project, dir);
    for (const char* time : {"0", "1e308", "-1e308", "5"}) {
        CliRun run = frameInfo(package, std::string("--time ") + time, dir);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NO_THROW(json::parse(run.out)) << run.out;
    }
}

TEST(CliFrameInfo, AMissingOrUnreadableTimeSaysHowToGiveIt) {
    TempDir dir;
    auto package = saved(screenProject(), dir);
    for (const char* options : {"", "--time", "--time soon", "--time nan", "--time 1 --size 0x10"}) {
        CliRun run = frameInfo(package, options, dir);
        EXPECT_EQ(run.status, 2) << options;
        EXPECT_NE(run.err.find("--time"), std::string::npos) << run.err;
        EXPECT_TRUE(run.out.empty());
    }
    CliRun missing = frameInfo(dir / "none", "--time 1", dir);
    EXPECT_EQ(missing.status, 1);
}
