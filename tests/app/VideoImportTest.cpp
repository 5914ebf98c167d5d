#include "VideoImport.h"
#include "look/LookLibrary.h"
#include "package/ProjectPackage.h"

#include "support/SoundFiles.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace recorder;
using namespace recorder::test;
namespace fs = std::filesystem;

namespace {

// A real movie made by FFmpeg's own encoders: test pattern, and a tone unless
// `sound` is false.
fs::path makeMovie(const fs::path& file, bool sound, const std::string& size = "640x360", double seconds = 2) {
    std::string command = "ffmpeg -v error -y -f lavfi -i testsrc=size=" + size + ":rate=25:duration=" +
                          std::to_string(seconds);
    if (sound) command += " -f lavfi -i sine=frequency=440:sample_rate=44100:duration=" + std::to_string(seconds);
    command += " -c:v libx264 -pix_fmt yuv420p" + std::string(sound ? " -c:a aac -shortest" : "") + " '" +
               file.string() + "' >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return file;
}

struct VideoImportTest : ::testing::Test {
    TempDir dir;
    fs::path recordings = dir / "Recordings";
    std::vector<std::string> log;
    VideoImport::Log keep = [this](const std::string& line) { log.push_back(line); };
};

} // namespace

TEST_F(VideoImportTest, MakesAProjectWithTheVideoItsSoundAndOneClip) {
    auto movie = makeMovie(dir / "Product demo.mp4", true);
    auto imported = VideoImport::importVideo(movie, recordings, std::nullopt, nullptr, keep);
    EXPECT_EQ(imported.package, recordings / "Product demo.tidereel");
    const Project& project = imported.project;
    EXPECT_EQ(project.name, "Product demo");
    EXPECT_EQ(project.fromVideo, true);
    EXPECT_EQ(project.canvas, (CanvasSettings{1920, 1080, 25}));

    const Asset* screen = project.asset(AssetKind::screen);
    ASSERT_TRUE(screen);
    EXPECT_EQ(screen->relativePath, "Product demo.mp4");
    EXPECT_EQ(screen->pixelSize, (Size{640, 360}));
    EXPECT_NEAR(*screen->duration, 2, 0.05);
    ASSERT_EQ(project.clips.size(), 1u);
    EXPECT_EQ(project.clips[0].assetID, screen->id);
    EXPECT_EQ(project.clips[0].sourceEnd, *screen->duration);
    EXPECT_FALSE(project.asset(AssetKind::events)) << "no click log, so no automatic zooms";

    const Asset* sound = project.asset(AssetKind::microphone);
    ASSERT_TRUE(sound);
    auto soundFile = ProjectPackage::assetURL(*sound, imported.package);
    EXPECT_EQ(soundFile.extension(), ".m4a");
    EXPECT_EQ(readAll(soundFile), readAll(movie)) << "the sound is copied, not re-encoded";

    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].rfind("opened video ", 0), 0u);
    EXPECT_NE(log[0].find("Product demo.mp4"), std::string::npos);
    EXPECT_NE(log[0].find("2.0 s"), std::string::npos);
    EXPECT_NE(log[0].find("with sound"), std::string::npos);
}

TEST_F(VideoImportTest, AVideoWithoutSoundHasNoSoundAsset) {
    auto movie = makeMovie(dir / "silent.mp4", false, "480x640");
    auto imported = VideoImport::importVideo(movie, recordings, std::string("Portrait"), nullptr, keep);
    EXPECT_EQ(imported.package.filename(), "Portrait.tidereel");
    EXPECT_EQ(imported.project.assets.size(), 1u);
    EXPECT_EQ(imported.project.canvas.width, 1080) << "a portrait video gets a portrait canvas";
    EXPECT_EQ(imported.project.canvas.height, 1920);
    EXPECT_NE(log.at(0).find("without sound"), std::string::npos);
}

TEST_F(VideoImportTest, RefusesASoundFileAndLeavesNothingBehind) {
    writeWav(dir / "voice.wav", tone(440, 1, 0.3));
    writeText(dir / "notes.txt", "not a movie");
    for (const char* name : {"voice.wav", "notes.txt"}) {
        try {
            VideoImport::importVideo(dir / name, recordings, std::nullopt, nullptr, keep);
            FAIL() << name << " has no picture";
        } catch (const VideoImport::Failure& failure) {
            EXPECT_STREQ(failure.what(), "That file has no video track.");
        }
    }
    EXPECT_TRUE(!fs::exists(recordings) || fs::is_empty(recordings));
    EXPECT_TRUE(log.empty());
}

TEST_F(VideoImportTest, TakesAFreeNameBesideAnEarlierImport) {
    auto movie = makeMovie(dir / "clip.mp4", true, "320x240", 1);
    auto first = VideoImport::importVideo(movie, recordings, std::nullopt, nullptr, keep);
    auto second = VideoImport::importVideo(movie, recordings, std::nullopt, nullptr, keep);
    EXPECT_EQ(first.package.filename(), "clip.tidereel");
    EXPECT_EQ(second.package.filename(), "clip 2.tidereel");
    EXPECT_EQ(second.project.name, "clip 2");
    EXPECT_EQ(second.project.canvas, (CanvasSettings{1920, 1440, 25})) << "4:3 keeps its shape at 1920 wide";
}

TEST_F(VideoImportTest, BringsInTheLastLooksCaptionsAndWatermarkButNotItsFrame) {
    LookLibrary looks(dir / "support");
    Project styled("Styled", {1920, 1080, 30}, "1.0");
    styled.style.padding = 0.2;
    styled.watermark = WatermarkSettings{};
    styled.watermark->text = "ACME";
    styled.captionStyle = CaptionStyle{};
    styled.captionStyle->size = 0.07;
    looks.remember(styled, dir / "Styled.tidereel");
    ASSERT_TRUE(looks.lastPreset());

    auto movie = makeMovie(dir / "talk.mp4", true, "640x360", 1);
    auto imported = VideoImport::importVideo(movie, recordings, std::nullopt, &looks, keep);
    ASSERT_TRUE(imported.project.watermark);
    EXPECT_EQ(imported.project.watermark->text, "ACME");
    ASSERT_TRUE(imported.project.captionStyle);
    EXPECT_EQ(imported.project.captionStyle->size, 0.07);
    EXPECT_EQ(imported.project.style.padding, StyleSettings{}.padding);
}
