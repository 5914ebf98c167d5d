// The scene that scripts/demo records: started on a private X server and
// driven with xdotool the way the demo drives it.
#include "support/XvfbDisplay.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <poll.h>
#include <sstream>
#include <string>
#include <thread>
#include <sys/wait.h>
#include <unistd.h>

using recorder::test::XvfbDisplay;
using namespace std::chrono_literals;

namespace {

std::filesystem::path scenePath() { return std::filesystem::path(RECORDER_CLI_PATH).parent_path() / "demo-scene"; }

// The scene program on a display, with its standard output read line by line.
class Scene {
public:
    explicit Scene(const std::string& display) : display_(display) {
        int fds[2];
        if (pipe(fds) != 0) throw std::runtime_error("no pipe for the scene");
        pid_ = fork();
        if (pid_ == 0) {
            setenv("DISPLAY", display.c_str(), 1);
            dup2(fds[1], STDOUT_FILENO);
            close(fds[0]);
            execl(scenePath().c_str(), "demo-scene", static_cast<char*>(nullptr));
            _exit(127);
        }
        close(fds[1]);
        out_ = fds[0];
    }

    ~Scene() {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
        close(out_);
    }

    std::optional<std::string> nextLine(std::chrono::milliseconds timeout) {
        auto deadline = std::chrono::steady_clock::now() + timeout;
        for (;;) {
            if (auto end = buffer_.find('\n'); end != std::string::npos) {
                std::string line = buffer_.substr(0, end);
                buffer_.erase(0, end + 1);
                return line;
            }
            auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            pollfd readable{out_, POLLIN, 0};
            if (left.count() <= 0 || poll(&readable, 1, int(left.count())) <= 0) return std::nullopt;
            char chunk[512];
            ssize_t got = read(out_, chunk, sizeof chunk);
            if (got <= 0) return std::nullopt;
            buffer_.append(chunk, std::size_t(got));
        }
    }

    void xdotool(const std::string& arguments) const {
        std::string command = "DISPLAY=" + display_ + " xdotool " + arguments;
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }

    // Clicks the centre of a control named in the "ready" line.
    void clickOn(const std::string& control) {
        const auto& [x, y] = controls_.at(control);
        xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
    }

    // "ready title=X,Y notes=X,Y …" → the controls and their screen centres.
    bool readControls(const std::string& line) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word != "ready") return false;
        while (words >> word) {
            auto equals = word.find('='), comma = word.find(',');
            if (equals == std::string::npos || comma == std::string::npos) return false;
            controls_[word.substr(0, equals)] = {std::stoi(word.substr(equals + 1)), std::stoi(word.substr(comma + 1))};
        }
        return true;
    }

    const std::map<std::string, std::pair<int, int>>& controls() const { return controls_; }

private:
    std::string display_;
    pid_t pid_ = -1;
    int out_ = -1;
    std::string buffer_;
    std::map<std::string, std::pair<int, int>> controls_;
};

TEST(DemoScene, SavesWhatIsTypedIntoItAndIgnoresAnEmptyTitle) {
    ASSERT_TRUE(std::filesystem::exists(scenePath())) << scenePath();
    XvfbDisplay display;
    Scene scene(display.name());
    auto ready = scene.nextLine(20s);
    ASSERT_TRUE(ready) << "the scene never said it was on screen";
    ASSERT_TRUE(scene.readControls(*ready)) << *ready;
    for (const char* control : {"title", "notes", "priority", "save", "cancel", "list"})
        EXPECT_TRUE(scene.controls().count(control)) << control;
    // Every control lies on the 1920x1080 screen, and the form sits right of the list.
    for (const auto& [name, centre] : scene.controls()) {
        EXPECT_GT(centre.first, 0) << name;
        EXPECT_LT(centre.first, 1920) << name;
        EXPECT_GT(centre.second, 0) << name;
        EXPECT_LT(centre.second, 1080) << name;
    }
    EXPECT_GT(scene.controls().at("title").first, scene.controls().at("list").first);

    // Save with nothing in the title adds nothing.
    scene.clickOn("save");
    EXPECT_FALSE(scene.nextLine(500ms));

    scene.clickOn("title");
    scene.xdotool("type --delay 20 'Ship the release'");
    scene.clickOn("notes");
    scene.xdotool("type --delay 20 'Ask Sam first.'");
    scene.clickOn("priority");
    std::this_thread::sleep_for(400ms); // the drop-down list opens
    scene.xdotool("key Down Down Return");
    scene.clickOn("save");
    auto saved = scene.nextLine(10s);
    ASSERT_TRUE(saved) << "Save said nothing";
    EXPECT_EQ(*saved, "saved\tShip the release\tUrgent\tAsk Sam first.");

    // The form is empty again afterwards: a second Save adds nothing.
    scene.clickOn("save");
    EXPECT_FALSE(scene.nextLine(500ms));
}

} // namespace
