#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <string>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace recorder::test {

// A private X server for one test: Xvfb picks a free display number itself
// (-displayfd), so test programs running side by side never share one.
// -noreset keeps it up when its last client leaves.
class XvfbDisplay {
public:
    explicit XvfbDisplay(int width = 1920, int height = 1080) {
        int pipeFds[2];
        if (pipe(pipeFds) != 0) throw std::runtime_error("no pipe for Xvfb");
        pid_ = fork();
        if (pid_ == 0) {
            // Gone with the test program, however it ends; quiet on its streams.
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            int quiet = open("/dev/null", O_RDWR);
            dup2(quiet, STDIN_FILENO);
            dup2(quiet, STDOUT_FILENO);
            dup2(quiet, STDERR_FILENO);
            close(pipeFds[0]);
            std::string fd = std::to_string(pipeFds[1]);
            std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
            execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", screen.c_str(), "-noreset", "-nolisten",
                   "tcp", static_cast<char*>(nullptr));
            _exit(127);
        }
        close(pipeFds[1]);
        name_ = ":" + readNumber(pipeFds[0]);
        close(pipeFds[0]);
        waitUntilItAnswers();
    }

    ~XvfbDisplay() {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }

    XvfbDisplay(const XvfbDisplay&) = delete;
    XvfbDisplay& operator=(const XvfbDisplay&) = delete;

    const std::string& name() const { return name_; }

private:
    static std::string readNumber(int fd) {
        std::string number;
        char c = 0;
        while (read(fd, &c, 1) == 1 && c != '\n') number += c;
        if (number.empty()) throw std::runtime_error("Xvfb did not start");
        return number;
    }

    void waitUntilItAnswers() const {
        for (int i = 0; i < 200; ++i) {
            xcb_connection_t* c = xcb_connect(name_.c_str(), nullptr);
            bool ok = !xcb_connection_has_error(c);
            xcb_disconnect(c);
            if (ok) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
        }
        throw std::runtime_error("Xvfb " + name_ + " does not answer");
    }

    pid_t pid_ = -1;
    std::string name_;
};

} // namespace recorder::test
