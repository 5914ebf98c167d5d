#pragma once

#include "support/TempDir.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace recorder::test {

// A private sound server for one test, in its own folder, so test programs
// running side by side never share one. Its default output is the null sink
// "speakers" (system sound is its monitor); its default input "testmic" is
// the monitor of a second null sink, "micwire", so what is played into
// "micwire" is what the microphone hears. PULSE_SERVER points this process
// and its children at it while it lives.
class PulseAudioServer {
public:
    static constexpr const char* outputSink = "speakers";
    static constexpr const char* microphoneWire = "micwire";
    static constexpr const char* microphone = "testmic";

    PulseAudioServer() {
        std::filesystem::create_directories(folder_ / "run");
        std::filesystem::create_directories(folder_ / "home");
        socket_ = (folder_ / "run" / "native").string();
        // The socket comes last: once it answers, every device is there.
        writeText(folder_ / "test.pa",
                  "load-module module-null-sink sink_name=speakers rate=48000 channels=2 "
                  "sink_properties=device.description=Speakers\n"
                  "load-module module-null-sink sink_name=micwire rate=48000 channels=1\n"
                  "load-module module-remap-source source_name=testmic master=micwire.monitor "
                  "source_properties=device.description=Test_Microphone\n"
                  "set-default-sink speakers\n"
                  "set-default-source testmic\n"
                  "load-module module-native-protocol-unix auth-anonymous=1 socket=" + socket_ + "\n");
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            int quiet = open("/dev/null", O_RDWR);
            dup2(quiet, STDIN_FILENO);
            dup2(quiet, STDOUT_FILENO);
            dup2(quiet, STDERR_FILENO);
            setenv("XDG_RUNTIME_DIR", (folder_ / "run").c_str(), 1);
            setenv("HOME", (folder_ / "home").c_str(), 1);
            std::string script = (folder_ / "test.pa").string();
            execlp("pulseaudio", "pulseaudio", "--daemonize=no", "--system=false", "--exit-idle-time=-1",
                   "--disallow-exit", "--realtime=no", "--use-pid-file=no", "-n", "-F", script.c_str(),
                   static_cast<char*>(nullptr));
            _exit(127);
        }
        waitUntilItAnswers();
        setenv("PULSE_SERVER", server().c_str(), 1);
    }

    ~PulseAudioServer() {
        unsetenv("PULSE_SERVER");
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }

    PulseAudioServer(const PulseAudioServer&) = delete;
    PulseAudioServer& operator=(const PulseAudioServer&) = delete;

    std::string server() const { return "unix:" + socket_; }
    const std::filesystem::path& folder() const { return folder_.path(); }

    // Plays a sound file into a sink and waits until it has been played.
    void play(const std::filesystem::path& file, const std::string& sink) const {
        std::string command = "paplay --server=" + server() + " --device=" + sink + " '" + file.string() + "'";
        if (std::system(command.c_str()) != 0) throw std::runtime_error("paplay failed: " + command);
    }

    // The same, without waiting: the playing runs on a thread of its own.
    std::thread playInBackground(const std::filesystem::path& file, const std::string& sink) const {
        return std::thread([this, file, sink] { play(file, sink); });
    }

    // Runs pactl against this server; true when it succeeds.
    bool pactl(const std::string& arguments) const {
        std::string command = "pactl --server=" + server() + " " + arguments + " >/dev/null 2>&1";
        return std::system(command.c_str()) == 0;
    }

private:
    void waitUntilItAnswers() const {
        for (int i = 0; i < 400; ++i) {
            int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            socket_.copy(address.sun_path, sizeof(address.sun_path) - 1);
            bool ok = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
            close(fd);
            if (ok) return;
            if (waitpid(pid_, nullptr, WNOHANG) == pid_) throw std::runtime_error("pulseaudio exited at start");
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
        }
        throw std::runtime_error("pulseaudio does not answer");
    }

    TempDir folder_;
    std::string socket_;
    pid_t pid_ = -1;
};

} // namespace recorder::test
