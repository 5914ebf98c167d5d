#include "events/EventLog.h"
#include "support/MovieFile.h"
#include "support/TempDir.h"
#include "support/TestWindow.h"
#include "support/XTestInput.h"
#include "support/XvfbDisplay.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using nlohmann::json;
using namespace std::chrono_literals;
using recorder::EventLog;
using recorder::test::MovieFile;
using recorder::test::readText;
using recorder::test::TempDir;
using recorder::test::TestWindow;
using recorder::test::XTestInput;
using recorder::test::XvfbDisplay;

namespace {

struct QuietFFmpeg {
    QuietFFmpeg() { av_log_set_level(AV_LOG_ERROR); }
} quietFFmpeg;

struct CliRun {
    int status = -1;
    std::string out;
    std::string err;
};

// Starts the real recorder-cli on a display, its output going to files.
pid_t launch(const std::string& display, const std::vector<std::string>& arguments, const TempDir& dir) {
    pid_t child = fork();
    if (child == 0) {
        setenv("DISPLAY", display.c_str(), 1);
        int out = open((dir / "stdout").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open((dir / "stderr").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        std::vector<char*> argv{const_cast<char*>(RECORDER_CLI_PATH)};
        for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        execv(RECORDER_CLI_PATH, argv.data());
        _exit(127);
    }
    return child;
}

CliRun finish(pid_t child, const TempDir& dir) {
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readText(dir / "stdout"), readText(dir / "stderr")};
}

CliRun cli(const std::string& display, const std::vector<std::string>& arguments, const TempDir& dir) {
    return finish(launch(display, arguments, dir), dir);
}

// A window whose colour changes 30 times a second, like scrolling text.
class BusyWindow {
public:
    BusyWindow(const std::string& display, int x, int y, int width, int height)
        : window_(display, x, y, width, height, "Busy"), thread_([this] {
              for (std::uint32_t i = 0; running_; ++i) {
                  window_.paint(i * 0x030507u & 0xffffff, ~i * 0x050301u & 0xffffff);
                  std::this_thread::sleep_for(33ms);
              }
          }) {}
    ~BusyWindow() {
        running_ = false;
        thread_.join();
    }

private:
    std::atomic<bool> running_{true};
    TestWindow window_;
    std::thread thread_;
};

} // namespace

TEST(CliSources, PrintsTheDisplaysAndWindowsAsJson) {
    XvfbDisplay display;
    TempDir dir;
    TestWindow window(display.name(), 40, 60, 640, 480, "Notes");
    CliRun run = cli(display.name(), {"sources"}, dir);
    ASSERT_EQ(run.status, 0) << run.err;
    json content = json::parse(run.out);
    ASSERT_EQ(content["displays"].size(), 1u);
    json screen = content["displays"][0];
    EXPECT_TRUE(screen["id"].is_number_unsigned());
    EXPECT_TRUE(screen["name"].is_string());
    EXPECT_EQ(screen["frame"], (json{{"x", 0}, {"y", 0}, {"width", 1920}, {"height", 1080}}));
    EXPECT_EQ(screen["width"], 1920);
    EXPECT_EQ(screen["height"], 1080);
    ASSERT_EQ(content["windows"].size(), 1u);
    EXPECT_EQ(content["windows"][0],
              (json{{"id", window.id()}, {"title", "Notes"}, {"app", "TestApp"}, {"bundleID", "testapp"},
                    {"frame", {{"x", 40}, {"y", 60}, {"width", 640}, {"height", 480}}}}));
}

TEST(CliSources, SaysWhatToDoWithoutADisplay) {
    TempDir dir;
    CliRun run = cli(":9999", {"sources"}, dir);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "Nothing to capture: no display or window was found. Run this inside a desktop session, or set "
                       "DISPLAY to an X server.\n");
}

TEST(CliCaptureTest, RecordsAnAreaWithItsClicksIntoTheFolder) {
    XvfbDisplay display;
    TempDir dir;
    BusyWindow busy(display.name(), 0, 0, 800, 600);
    XTestInput input(display.name());
    auto out = dir / "take";
    pid_t child = launch(display.name(), {"capture-test", "--area", "100,100,641,480", "--seconds", "2", "--out", out.string()}, dir);
    std::this_thread::sleep_for(1s);
    input.moveTo(420, 340);
    input.click(1);
    CliRun run = finish(child, dir);
    ASSERT_EQ(run.status, 0) << run.err;
    json summary = json::parse(run.out);
    EXPECT_NEAR(summary["duration"].get<double>(), 2.0, 0.15);
    EXPECT_GT(summary["frames"].get<int>(), 20);
    EXPECT_EQ(summary["dropped"], 0);

    MovieFile movie(out / "screen.mov");
    EXPECT_EQ(movie.width(), 640);
    EXPECT_EQ(movie.height(), 480);
    EXPECT_NEAR(movie.videoDuration(), summary["duration"].get<double>(), 0.01);
    auto log = EventLog::read(out / "events.json");
    ASSERT_TRUE(log);
    ASSERT_EQ(log->clicks.size(), 2u);
    EXPECT_DOUBLE_EQ(log->clicks[0].position.x, (420 - 100) / 641.0);
    EXPECT_DOUBLE_EQ(log->clicks[0].position.y, (340 - 100) / 480.0);
    EXPECT_NEAR(log->clicks[0].time, 1.0, 0.4);
    EXPECT_FALSE(log->samples.empty());
}

TEST(CliCaptureTest, AKilledRecordingLeavesAFileThatPlaysUpToItsLastSeconds) {
    XvfbDisplay display;
    TempDir dir;
    BusyWindow busy(display.name(), 0, 0, 1280, 720);
    auto out = dir / "take";
    pid_t child = launch(display.name(), {"capture-test", "--area", "0,0,1280,720", "--seconds", "30", "--out", out.string()}, dir);
    std::this_thread::sleep_for(5s);
    kill(child, SIGKILL);
    finish(child, dir);
    MovieFile movie(out / "screen.mov");
    EXPECT_EQ(movie.width(), 1280);
    EXPECT_GT(movie.videoDuration(), 2.5);
    EXPECT_GT(movie.pictures().size(), 60u);
}

TEST(CliCaptureTest, ExplainsBadArgumentsAndUnknownSources) {
    XvfbDisplay display;
    TempDir dir;
    CliRun noFolder = cli(display.name(), {"capture-test", "--display", "1", "--seconds", "2"}, dir);
    EXPECT_EQ(noFolder.status, 2);
    EXPECT_NE(noFolder.err.find("Give one source, a positive --seconds and an --out folder."), std::string::npos);
    CliRun twoSources = cli(display.name(), {"capture-test", "--window", "5", "--display", "1", "--seconds", "2",
                                             "--out", (dir / "x").string()}, dir);
    EXPECT_EQ(twoSources.status, 2);
    CliRun unknown = cli(display.name(), {"capture-test", "--window", "12345", "--seconds", "1", "--out", (dir / "y").string()}, dir);
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.err, "Could not start screen capture: Nothing to capture: no display or window was found. Run "
                           "recorder-cli sources to see what can be recorded.\n");
}

TEST(CliCaptureTest, AWindowClosedMidwaySaysSoAndKeepsTheRecording) {
    XvfbDisplay display;
    TempDir dir;
    auto window = std::make_unique<TestWindow>(display.name(), 10, 10, 320, 240, "Short-lived");
    window->paint(0xff0000);
    auto out = dir / "take";
    pid_t child = launch(display.name(), {"capture-test", "--window", std::to_string(window->id()), "--seconds", "10",
                                          "--out", out.string()}, dir);
    std::this_thread::sleep_for(1500ms);
    window.reset();
    CliRun run = finish(child, dir);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err.substr(0, 50), "The screen capture stopped: the window was closed.");
    EXPECT_LT(json::parse(run.out)["duration"].get<double>(), 3);
    EXPECT_GE(MovieFile(out / "screen.mov").pictures().size(), 1u);
    EXPECT_TRUE(EventLog::read(out / "events.json"));
}
