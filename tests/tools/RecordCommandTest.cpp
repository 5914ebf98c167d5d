#include "package/ProjectPackage.h"
#include "support/MovieFile.h"
#include "support/TempDir.h"
#include "support/TestWindow.h"
#include "support/XvfbDisplay.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace recorder;
using namespace std::chrono_literals;
using recorder::test::MovieFile;
using recorder::test::readText;
using recorder::test::TempDir;
using recorder::test::TestWindow;
using recorder::test::XvfbDisplay;

namespace {

struct QuietFFmpeg {
    QuietFFmpeg() { av_log_set_level(AV_LOG_ERROR); }
} quietFFmpeg;

struct RecordRun {
    int status = -1;
    std::string out;
    std::string err;
};

// `recorder-cli record` on a private display, with settings and sound of its
// own: no sound server, a settings folder in the test's folder.
class RecordCommand : public ::testing::Test {
protected:
    pid_t launch(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "record");
        for (std::string extra : std::vector<std::string>{"--projects-dir", (dir / "Recordings").string(), "--camera", "none", "--mic", "none"})
            arguments.push_back(extra);
        pid_t child = fork();
        if (child == 0) {
            setenv("DISPLAY", display.name().c_str(), 1);
            setenv("XDG_CONFIG_HOME", (dir / "config").c_str(), 1);
            setenv("XDG_DATA_HOME", (dir / "data").c_str(), 1);
            setenv("PULSE_SERVER", "unix:/nonexistent", 1);
            int out = open((dir / "stdout").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            int err = open((dir / "stderr").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(out, STDOUT_FILENO);
            dup2(err, STDERR_FILENO);
            std::vector<char*> argv{const_cast<char*>(RECORDER_CLI_PATH)};
            for (auto& argument : arguments) argv.push_back(argument.data());
            argv.push_back(nullptr);
            execv(RECORDER_CLI_PATH, argv.data());
            _exit(127);
        }
        return child;
    }

    RecordRun finish(pid_t child) {
        int status = 0;
        waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readText(dir / "stdout"), readText(dir / "stderr")};
    }

    RecordRun record(const std::vector<std::string>& arguments) { return finish(launch(arguments)); }

    // Waits until the recorder says it records.
    bool waitForRecording(std::chrono::milliseconds limit = 10s) {
        auto until = std::chrono::steady_clock::now() + limit;
        while (readText(dir / "stderr").find("Recording. Ctrl-C") == std::string::npos) {
            if (std::chrono::steady_clock::now() > until) return false;
            std::this_thread::sleep_for(20ms);
        }
        return true;
    }

    std::vector<std::filesystem::path> packages() {
        std::vector<std::filesystem::path> found;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(dir / "Recordings", error)) found.push_back(entry.path());
        return found;
    }

    XvfbDisplay display{640, 480};
    TempDir dir;
};

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

} // namespace

TEST_F(RecordCommand, RecordsAnAreaForTheGivenTimeAndPrintsThePackage) {
    TestWindow painter(display.name(), 0, 0, 640, 480, "Painter");
    painter.paint(0xff0000, 0x0000ff);
    RecordRun run = record({"--area", "0,0,320,240", "--countdown", "1", "--max-seconds", "2", "--fps", "30"});
    ASSERT_EQ(run.status, 0) << run.err;
    ASSERT_FALSE(run.out.empty());
    std::filesystem::path package = run.out.substr(0, run.out.size() - 1);
    EXPECT_EQ(run.out, package.string() + "\n");
    EXPECT_EQ(package.parent_path(), dir / "Recordings");
    EXPECT_EQ(package.extension(), ".tidereel");
    Project project = ProjectPackage::load(package);
    EXPECT_EQ(project.canvas, (CanvasSettings{1920, 1440, 30}));
    EXPECT_NEAR(*project.assets.at(0).duration, 2.0, 0.3);
    EXPECT_EQ(MovieFile(package / "assets" / "screen.mov").width(), 320);
    EXPECT_NE(run.err.find("Recording in 1…\n"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("recording 00:0"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("dropped 0 frames"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("No sound server answered; recording without microphone and system sound."),
              std::string::npos);
}

TEST_F(RecordCommand, SigusrPausesAndResumesAndCtrlCStopsAndSaves) {
    TestWindow painter(display.name(), 0, 0, 640, 480, "Painter");
    painter.paint(0x00ff00);
    pid_t child = launch({"--countdown", "0", "--max-seconds", "60"});
    ASSERT_TRUE(waitForRecording());
    std::this_thread::sleep_for(1000ms);
    kill(child, SIGUSR1);
    std::this_thread::sleep_for(1500ms);
    kill(child, SIGUSR1);
    std::this_thread::sleep_for(1000ms);
    kill(child, SIGINT);
    RecordRun run = finish(child);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("Paused at 00:0"), std::string::npos) << run.err;
    Project project = ProjectPackage::load(firstLine(run.out));
    // 3.5 s went by; the pause of 1.5 s isn't in the recording.
    EXPECT_NEAR(*project.assets.at(0).duration, 2.0, 0.35);
    EXPECT_EQ(project.canvas, (CanvasSettings{1920, 1440, 60})); // the whole 640 × 480 display
}

TEST_F(RecordCommand, AKilledRecorderLeavesAScreenFileThatPlaysUpToItsLastSeconds) {
    TestWindow painter(display.name(), 0, 0, 640, 480, "Painter");
    pid_t child = launch({"--countdown", "0", "--max-seconds", "60"});
    ASSERT_TRUE(waitForRecording());
    for (std::uint32_t i = 0; i < 100; ++i) {
        painter.paint(i * 0x030507u & 0xffffff);
        std::this_thread::sleep_for(33ms);
    }
    kill(child, SIGKILL);
    finish(child);
    auto left = packages();
    ASSERT_EQ(left.size(), 1u);
    // The project is written at the stop, which never came; the media are there.
    EXPECT_FALSE(std::filesystem::exists(left[0] / "manifest.json"));
    MovieFile movie(left[0] / "assets" / "screen.mov");
    EXPECT_GT(movie.videoDuration(), 2.0);
    EXPECT_GT(movie.pictures().size(), 40u);
}

TEST_F(RecordCommand, ATenthOfASecondIsTooShortAndLeavesNothing) {
    RecordRun run = record({"--countdown", "0", "--max-seconds", "0.1"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.out.empty());
    EXPECT_NE(run.err.find("The recording was too short to save.\n"), std::string::npos) << run.err;
    EXPECT_TRUE(packages().empty());
}

TEST_F(RecordCommand, CtrlCDuringTheCountdownRecordsNothing) {
    pid_t child = launch({"--countdown", "5"});
    auto until = std::chrono::steady_clock::now() + 5s;
    while (readText(dir / "stderr").find("Recording in 5") == std::string::npos && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(20ms);
    kill(child, SIGINT);
    RecordRun run = finish(child);
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("The countdown was cancelled; nothing was recorded.\n"), std::string::npos) << run.err;
    EXPECT_TRUE(packages().empty());
}

TEST_F(RecordCommand, ExplainsWrongArgumentsAndUnknownWindows) {
    RecordRun both = record({"--window", "5", "--area", "0,0,10,10"});
    EXPECT_EQ(both.status, 2);
    EXPECT_EQ(firstLine(both.err).substr(0, 52), "Give at most one source and valid values. Usage: rec");
    EXPECT_EQ(record({"--fps", "25"}).status, 2);
    RecordRun unknown = record({"--window", "12345", "--countdown", "0"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_NE(unknown.err.find("Could not start screen capture: Nothing to capture: no display or window was found.\n"),
              std::string::npos)
        << unknown.err;
}
