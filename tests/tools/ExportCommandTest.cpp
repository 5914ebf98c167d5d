#include "support/CliRunner.h"
#include "support/MovieFile.h"
#include "support/TempDir.h"
#include "support/TestPackage.h"

#include <gtest/gtest.h>

#include <QImage>

#include <csignal>
#include <cmath>
#include <fcntl.h>
#include <regex>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace recorder;
using namespace recorder::test;
namespace fs = std::filesystem;

namespace {

std::string quoted(const fs::path& path) { return "'" + path.string() + "'"; }

// The real recorder-cli on a small package, with its settings, support and
// videos folders inside the test's folder.
class ExportCommand : public ::testing::Test {
protected:
    ExportCommand() : package(dir.path(), {640, 360, 30}) {}

    // `filters` draw on the picture after the source, like "drawtext=…".
    void addScreen(double seconds, double clipEnd, const std::string& size = "640x360",
                   const std::string& source = "testsrc2", const std::string& filters = "") {
        std::string input = source + (source.find('=') == std::string::npos ? "=" : ":") + "s=" + size +
                            ":r=30:d=" + std::to_string(seconds);
        if (!filters.empty()) input += "," + filters;
        const Asset& screen = package.add(AssetKind::screen, "screen.mov",
                                          "-f lavfi -i \"" + input + "\" -c:v libx264 -preset ultrafast -pix_fmt yuv420p",
                                          seconds);
        package.clipOver(screen, 0, clipEnd);
        package.save();
    }

    std::string environment() const {
        return "HOME=" + quoted(dir.path()) + " XDG_CONFIG_HOME=" + quoted(dir / "config") +
               " XDG_DATA_HOME=" + quoted(dir / "data") + " XDG_STATE_HOME=" + quoted(dir / "state");
    }

    CliRun exportPackage(const std::string& options) {
        return runCli("export " + quoted(package.path()) + " " + options, dir, "", environment());
    }

    // Sets the export folder the way the settings window does.
    void setExportFolder(const fs::path& folder) {
        writeText(dir / "config" / "Tidereel" / "Tidereel.conf", "[General]\nexportDirectory=" + folder.string() + "\n");
    }

    TempDir dir;
    TestPackage package;
};

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

double psnr(const Picture& exported, const QImage& rendered) {
    double error = 0;
    for (int y = 0; y < rendered.height(); ++y)
        for (int x = 0; x < rendered.width(); ++x) {
            QRgb want = rendered.pixel(x, y);
            Picture::Pixel got = exported.at(x, y);
            double dr = qRed(want) - got.r, dg = qGreen(want) - got.g, db = qBlue(want) - got.b;
            error += dr * dr + dg * dg + db * db;
        }
    double mse = error / (3.0 * rendered.width() * rendered.height());
    return 10 * std::log10(255.0 * 255.0 / std::max(mse, 1e-9));
}

} // namespace

TEST_F(ExportCommand, Defaults_H264AtThirtyFpsInTheExportFolderUnderThePatternName) {
    package.project().name = "Q3/Q4: Review";
    addScreen(2, 1.5);
    fs::path folder = dir / "Exports";
    fs::create_directories(folder);
    setExportFolder(folder);
    CliRun run = exportPackage("");
    ASSERT_EQ(run.status, 0) << run.err;
    fs::path file = firstLine(run.out);
    EXPECT_EQ(run.out, file.string() + "\n") << "one line: the file's path";
    EXPECT_EQ(file.parent_path(), folder);
    EXPECT_TRUE(std::regex_match(file.filename().string(),
                                 std::regex(R"(Q3-Q4- Review \d{4}-\d{2}-\d{2} at \d{2}\.\d{2}\.mp4)")))
        << file.filename();
    MovieFile movie(file);
    EXPECT_EQ(movie.videoCodec(), "h264");
    EXPECT_EQ(movie.width(), 640);
    EXPECT_EQ(movie.height(), 360);
    EXPECT_EQ(movie.videoPackets().size(), 45u) << "1.5 s at 30 fps";
}

TEST_F(ExportCommand, Options_ChooseFormatSizeAndFrameRate) {
    addScreen(1, 0.5, "320x180");
    CliRun hevc = exportPackage("--format mp4HEVC --preset 1080p --fps 60 --out " + quoted(dir / "a.mp4"));
    ASSERT_EQ(hevc.status, 0) << hevc.err;
    MovieFile movie(dir / "a.mp4");
    EXPECT_EQ(movie.videoCodec(), "hevc");
    EXPECT_EQ(movie.width(), 1920);
    EXPECT_EQ(movie.height(), 1080);
    EXPECT_EQ(movie.videoPackets().size(), 30u) << "0.5 s at 60 fps";
    auto bytes = readBytes(dir / "a.mp4");
    EXPECT_NE(std::string(bytes.begin(), bytes.end()).find("hvc1"), std::string::npos);

    CliRun gif = exportPackage("--format gif --fps 60 --out " + quoted(dir / "a.gif"));
    ASSERT_EQ(gif.status, 0) << gif.err;
    MovieFile animation(dir / "a.gif");
    EXPECT_EQ(animation.videoPackets().size(), 7u) << "a GIF is always 15 frames a second";

    CliRun wrong = exportPackage("--format webm");
    EXPECT_EQ(wrong.status, 2);
    EXPECT_NE(wrong.err.find("mp4H264, mp4HEVC or gif"), std::string::npos) << wrong.err;
}

TEST_F(ExportCommand, Progress_IsAPercentageLineEveryFivePercentOffATerminal) {
    addScreen(2, 2, "160x90");
    CliRun run = exportPackage("--out " + quoted(dir / "p.mp4"));
    ASSERT_EQ(run.status, 0) << run.err;
    std::string expected;
    for (int step = 5; step <= 100; step += 5) expected += std::to_string(step) + "%\n";
    EXPECT_NE(run.err.find(expected), std::string::npos) << run.err;
}

TEST_F(ExportCommand, Failures_NameTheReasonAndLeaveNothingBehind) {
    addScreen(1, 1, "160x90");
    fs::path missing = dir / "no such folder" / "out.mp4";
    CliRun run = exportPackage("--out " + quoted(missing));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find(missing.string()), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(missing.parent_path()));

    writeText(dir / "a file", "not a folder");
    fs::path underAFile = dir / "a file" / "out.gif";
    run = exportPackage("--format gif --out " + quoted(underAFile));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find(underAFile.string()), std::string::npos) << run.err;

    package.project().clips.front().sourceEnd = 0.02;
    package.save();
    run = exportPackage("--out " + quoted(dir / "short.mp4"));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "There is nothing to export.\n");
    EXPECT_FALSE(fs::exists(dir / "short.mp4"));
}

TEST_F(ExportCommand, Interrupt_CancelsRemovesTheFileAndExits130) {
    addScreen(10, 10, "160x90");
    fs::path out = dir / "cut.mp4";
    fs::path errFile = dir / "interrupt.err";
    pid_t child = fork();
    if (child == 0) {
        int err = open(errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(err, STDERR_FILENO);
        int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        execl(RECORDER_CLI_PATH, "recorder-cli", "export", package.path().c_str(), "--preset", "1080p", "--out",
              out.c_str(), nullptr);
        _exit(127);
    }
    // Interrupt once the export is under way.
    for (int i = 0; i < 6000 && readText(errFile).find("10%") == std::string::npos; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_TRUE(fs::exists(out)) << readText(errFile);
    kill(child, SIGINT);
    int raw = 0;
    waitpid(child, &raw, 0);
    ASSERT_TRUE(WIFEXITED(raw));
    EXPECT_EQ(WEXITSTATUS(raw), 130);
    std::string err = readText(errFile);
    EXPECT_NE(err.find("Export cancelled.\n"), std::string::npos) << err;
    EXPECT_EQ(err.find("100%"), std::string::npos) << "stopped before the end";
    EXPECT_FALSE(fs::exists(out));
}

TEST_F(ExportCommand, Frames_MatchRenderFrameAtTheSameTimes) {
    // A page of text scrolling by, as a screen recording shows it.
    addScreen(2, 2, "640x360", "color=c=white",
              "drawtext=text='Exporter run frames cancel watchdog 0123456789':fontsize=22:fontcolor=0x202020:"
              "x=20:y=300-t*120,drawbox=x=0:y=0:w=640:h=30:color=0x3070d0:t=fill");
    fs::path out = dir / "look.mp4";
    CliRun run = exportPackage("--out " + quoted(out));
    ASSERT_EQ(run.status, 0) << run.err;
    auto pictures = MovieFile(out).pictures();
    ASSERT_EQ(pictures.size(), 60u);
    for (int frame : {0, 15, 44}) {
        fs::path png = dir / ("frame" + std::to_string(frame) + ".png");
        std::string time = std::to_string(frame / 30.0);
        ASSERT_EQ(runCli("render-frame " + quoted(package.path()) + " --time " + time + " --out " + quoted(png), dir)
                      .status,
                  0);
        QImage rendered(QString::fromStdString(png.string()));
        ASSERT_EQ(rendered.size(), QSize(640, 360));
        EXPECT_GE(psnr(pictures[std::size_t(frame)], rendered), 35) << "frame " << frame;
    }
}
