#include "support/TempDir.h"
#include "support/TestPackage.h"

#include <gtest/gtest.h>

#include <QImage>

#include <sys/wait.h>

using namespace recorder;
using namespace recorder::test;

namespace {

struct CliRun {
    int status = -1;
    std::string err;
};

CliRun renderFrame(const std::string& arguments, const TempDir& dir) {
    auto errFile = dir / "stderr";
    std::string command = "'" RECORDER_CLI_PATH "' render-frame " + arguments + " >/dev/null 2>'" + errFile.string() + "'";
    int raw = std::system(command.c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readText(errFile)};
}

std::string quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

class RenderFrameCli : public ::testing::Test {
protected:
    RenderFrameCli() : package(dir.path(), {1280, 720, 30}) {
        const Asset& screen = package.add(AssetKind::screen, "screen.mov",
                                          "-f lavfi -i color=c=0xE03030:s=800x500:r=30:d=2 -c:v libx264 -pix_fmt yuv420p", 2);
        package.clipOver(screen, 0, 2);
        package.save();
    }

    TempDir dir;
    TestPackage package;
};

} // namespace

TEST_F(RenderFrameCli, WritesTheFrameAtATimeAsAPicture) {
    auto out = dir / "frame.png";
    CliRun run = renderFrame(quoted(package.path()) + " --time 1 --out " + quoted(out), dir);
    ASSERT_EQ(run.status, 0) << run.err;
    QImage frame(QString::fromStdString(out.string()));
    ASSERT_EQ(frame.size(), QSize(1280, 720));
    QColor centre = frame.pixelColor(640, 360);
    EXPECT_NEAR(centre.red(), 0xE0, 4);
    EXPECT_NEAR(centre.green(), 0x30, 4);
    EXPECT_NEAR(frame.pixelColor(1279, 0).green(), 0xFC, 3) << "the default gradient's first colour at top right";
}

TEST_F(RenderFrameCli, RendersAtTheSizeAskedFor) {
    auto out = dir / "small.png";
    ASSERT_EQ(renderFrame(quoted(package.path()) + " --time 0.5 --out " + quoted(out) + " --size 640x360", dir).status, 0);
    EXPECT_EQ(QImage(QString::fromStdString(out.string())).size(), QSize(640, 360));
}

TEST_F(RenderFrameCli, RefusesAbsurdSizesWithASentenceAndDrawsNothing) {
    auto out = dir / "never.png";
    for (const char* size : {"0x0", "100000x10", "20000x20000", "12x", "wide"}) {
        CliRun run = renderFrame(quoted(package.path()) + " --time 1 --out " + quoted(out) + " --size " + size, dir);
        EXPECT_EQ(run.status, 2) << size;
        EXPECT_NE(run.err.find(size), std::string::npos) << run.err;
        EXPECT_FALSE(std::filesystem::exists(out));
    }
}

TEST_F(RenderFrameCli, AsksForTheTimeAndTheOutput) {
    CliRun run = renderFrame(quoted(package.path()) + " --out " + quoted(dir / "x.png"), dir);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("--time"), std::string::npos) << run.err;
    EXPECT_EQ(renderFrame(quoted(package.path()) + " --time soon --out x.png", dir).status, 2);
}

TEST_F(RenderFrameCli, LeavesOutAMissingRecordingAndSaysSo) {
    std::filesystem::remove(ProjectPackage::assetsURL(package.path()) / "screen.mov");
    auto out = dir / "frame.png";
    CliRun run = renderFrame(quoted(package.path()) + " --time 1 --out " + quoted(out), dir);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("screen.mov"), std::string::npos) << run.err;
    QImage frame(QString::fromStdString(out.string()));
    EXPECT_GT(frame.pixelColor(640, 360).green(), 200) << "the background shows where the screen would be";
}

TEST_F(RenderFrameCli, SaysWhenThePictureCannotBeWritten) {
    CliRun run = renderFrame(quoted(package.path()) + " --time 1 --out " + quoted(dir / "no" / "such" / "f.png"), dir);
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("couldn't be written"), std::string::npos) << run.err;
}

TEST_F(RenderFrameCli, SaysWhenThePackageCannotBeOpened) {
    CliRun run = renderFrame(quoted(dir / "nothing.tidereel") + " --time 1 --out " + quoted(dir / "f.png"), dir);
    EXPECT_EQ(run.status, 1);
    EXPECT_FALSE(run.err.empty());
}
