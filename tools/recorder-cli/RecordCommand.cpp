#include "CliArguments.h"
#include "CliCommands.h"

#include "Settings.h"
#include "audio/PulseContext.h"
#include "devices/CaptureDevices.h"
#include "log/Log.h"
#include "recording/RecordingSession.h"
#include "sink/CaptureError.h"

extern "C" {
#include <libavutil/log.h>
}

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <charconv>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace recorder::cli {

namespace {

constexpr const char* usageLine =
    "Usage: recorder-cli record [--display ID | --window ID | --area X,Y,W,H] [--camera ID|none] [--mic ID|none] "
    "[--system-audio | --no-system-audio] [--fps 30|60] [--countdown N] [--max-seconds N] [--projects-dir DIR]";

using Kind = RecordingSession::State::Kind;

struct Options {
    std::optional<std::uint32_t> display;
    std::optional<std::uint32_t> window;
    std::optional<Rect> area;
    std::optional<std::string> camera;
    std::optional<std::string> mic;
    std::optional<bool> systemAudio;
    std::optional<int> fps;
    std::optional<int> countdown;
    std::optional<double> maxSeconds;
    std::filesystem::path projectsDir;
};

bool parseOption(Options& options, const std::string& name, const std::string& value) {
    if (name == "--display") return parseNumber(value, options.display.emplace());
    if (name == "--window") return parseNumber(value, options.window.emplace());
    if (name == "--area") return parseArea(value, options.area.emplace());
    if (name == "--camera") return !(options.camera = value)->empty();
    if (name == "--mic") return !(options.mic = value)->empty();
    if (name == "--fps") return parseNumber(value, options.fps.emplace()) && (*options.fps == 30 || *options.fps == 60);
    if (name == "--countdown") return parseNumber(value, options.countdown.emplace()) && *options.countdown >= 0;
    if (name == "--max-seconds") return parseNumber(value, options.maxSeconds.emplace()) && *options.maxSeconds > 0;
    if (name == "--projects-dir") return !(options.projectsDir = value).empty();
    return false;
}

std::optional<Options> parse(const Arguments& args) {
    Options options;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--system-audio" || args[i] == "--no-system-audio") {
            options.systemAudio = args[i] == "--system-audio";
            continue;
        }
        if (i + 1 >= args.size() || !parseOption(options, args[i], args[i + 1])) return std::nullopt;
        ++i;
    }
    if (options.window && (options.display || options.area)) return std::nullopt;
    return options;
}

// An area lies on the first display unless --display names one; no source
// at all is the first display.
CaptureSource sourceOf(const Options& options, ScreenCaptureBackend& backend) {
    if (options.window) {
        auto window = backend.window(*options.window);
        return CaptureSource::window(*options.window, window ? window->title : "", window ? window->app : "");
    }
    std::uint32_t display = options.display.value_or(0);
    if (!options.display) {
        try {
            auto content = backend.shareableContent();
            if (!content.displays.empty()) display = content.displays.front().id;
        } catch (const CaptureError&) {
            // The capturer says so in its own words when it starts.
        }
    }
    if (options.area) return CaptureSource::area(display, *options.area);
    return CaptureSource::display(display);
}

// --camera/--mic ID or "none"; without one, the remembered choice.
std::optional<std::string> chosenCamera(const Options& options, const Settings& settings, const CaptureDevices& devices) {
    if (options.camera) return *options.camera == "none" ? std::nullopt : options.camera;
    auto remembered = devices.rememberedCamera(settings.lastCameraID());
    return remembered ? std::optional(remembered->id) : std::nullopt;
}

std::optional<std::string> chosenMicrophone(const Options& options, const Settings& settings,
                                            const CaptureDevices& devices) {
    if (options.mic) return *options.mic == "none" ? std::nullopt : options.mic;
    auto remembered = devices.rememberedMicrophone(settings.lastMicID());
    return remembered ? std::optional(remembered->id) : std::nullopt;
}

// The self-pipe: a signal handler may only write a byte; the event loop
// reads it and acts on the main thread.
int signalPipe[2] = {-1, -1};

void onSignal(int number) {
    char byte = char(number);
    [[maybe_unused]] auto written = ::write(signalPipe[1], &byte, 1);
}

bool installSignals() {
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return false;
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int number : {SIGINT, SIGTERM, SIGUSR1}) sigaction(number, &action, nullptr);
    return true;
}

std::string clock(double seconds) {
    int whole = int(seconds);
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d", whole / 60, whole % 60);
    return text;
}

// Runs one recording through the session on a Qt event loop and says how it
// goes on stderr: one updating line on a terminal, a line a second otherwise.
class RecordRun {
public:
    RecordRun(RecordingSession& session, std::optional<double> maxSeconds)
        : session_(session), maxSeconds_(maxSeconds), terminal_(::isatty(STDERR_FILENO)) {
        session_.addObserver([this](RecordingSession::Change change) {
            if (change == RecordingSession::Change::state) stateChanged();
        });
        status_.setInterval(terminal_ ? 200 : 1000);
        QObject::connect(&status_, &QTimer::timeout, [this] { showStatus(); });
        maxTimer_.setSingleShot(true);
        maxTimer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&maxTimer_, &QTimer::timeout, [this] { session_.stop(); });
        notifier_ = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] { readSignals(); });
    }

    // The exit code once the session is back to idle.
    int run(const RecordingSession::Options& options) {
        session_.start(options);
        if (session_.state().kind == Kind::idle) {
            std::cerr << session_.lastError().value_or("The recording could not start.") << "\n";
            return 1;
        }
        return QCoreApplication::exec();
    }

private:
    void stateChanged() {
        const auto& state = session_.state();
        if (state.kind == Kind::countdown) say("Recording in " + std::to_string(state.seconds) + "…");
        if (state.kind == Kind::recording) recordingStarted();
        if (state.kind == Kind::paused) {
            maxTimer_.stop();
            say("Paused at " + clock(session_.elapsed()) + ". Send SIGUSR1 to go on.");
        }
        if (state.kind == Kind::finishing) {
            status_.stop();
            say("Saving…");
        }
        // The finished project is set just after the state: look once it is.
        if (state.kind == Kind::idle) QTimer::singleShot(0, [this] { finished(); });
    }

    void recordingStarted() {
        if (!status_.isActive()) {
            say("Recording. Ctrl-C stops and saves, SIGUSR1 pauses.");
            status_.start();
        }
        recordingSince_ = std::chrono::steady_clock::now();
        if (maxSeconds_) {
            double left = std::max(0.0, *maxSeconds_ - recorded_);
            maxTimer_.start(int(std::ceil(left * 1000)));
        }
        if (stopWhenRecording_) session_.stop();
    }

    void readSignals() {
        char byte = 0;
        while (::read(signalPipe[0], &byte, 1) == 1) {
            if (byte == SIGUSR1) togglePause();
            else stopRequested();
        }
    }

    void togglePause() {
        if (session_.state().kind == Kind::recording)
            recorded_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - recordingSince_).count();
        session_.togglePause();
    }

    void stopRequested() {
        switch (session_.state().kind) {
        case Kind::countdown:
            cancelled_ = true;
            session_.cancelCountdown();
            break;
        case Kind::preparing: stopWhenRecording_ = true; break;
        case Kind::recording:
        case Kind::paused: session_.stop(); break;
        default: break;
        }
    }

    void showStatus() {
        const auto& state = session_.state();
        if (state.kind != Kind::recording && state.kind != Kind::paused) return;
        int level = int(std::lround(session_.microphone().level() * 100));
        std::string line = (state.kind == Kind::paused ? "paused " : "recording ") + clock(session_.elapsed());
        if (session_.microphone().isRecording()) line += ", microphone " + std::to_string(level) + " %";
        line += ", dropped " + std::to_string(session_.droppedFrames()) + " frames";
        if (terminal_) {
            std::cerr << "\r" << line << "\x1b[K" << std::flush;
            lineOpen_ = true;
        } else {
            std::cerr << line << "\n";
        }
    }

    void say(const std::string& text) {
        if (lineOpen_) std::cerr << "\n";
        lineOpen_ = false;
        std::cerr << text << "\n";
    }

    void finished() {
        if (session_.state().kind != Kind::idle) return;
        if (lineOpen_) std::cerr << "\n";
        lineOpen_ = false;
        const auto& error = session_.lastError();
        int code = 0;
        if (session_.finishedProjectURL()) {
            if (error) std::cerr << *error << "\n";
            std::cout << session_.finishedProjectURL()->string() << "\n" << std::flush;
        } else {
            std::cerr << (cancelled_ ? "The countdown was cancelled; nothing was recorded."
                                     : error.value_or("The recording could not be saved."))
                      << "\n";
            code = 1;
        }
        QCoreApplication::exit(code);
    }

    RecordingSession& session_;
    std::optional<double> maxSeconds_;
    bool terminal_;
    bool lineOpen_ = false;
    bool cancelled_ = false;
    bool stopWhenRecording_ = false;
    double recorded_ = 0;
    std::chrono::steady_clock::time_point recordingSince_;
    QTimer status_;
    QTimer maxTimer_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace

int runRecord(const Arguments& args) {
    auto options = parse(args);
    if (!options) {
        std::cerr << "Give at most one source and valid values. " << usageLine << "\n";
        return 2;
    }
    av_log_set_level(AV_LOG_ERROR);
    Log::setHandler([](Log::Level level, std::string_view category, std::string_view message) {
        if (level == Log::Level::error) std::cerr << "[" << category << "] " << message << "\n";
    });
    if (!installSignals()) {
        std::cerr << "Could not set up signal handling. Try again.\n";
        return 1;
    }
    static int argc = 1;
    static char name[] = "recorder-cli";
    static char* argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);

    Settings settings;
    auto sound = PulseContext::connect("recorder-cli");
    if (!sound) std::cerr << "No sound server answered; recording without microphone and system sound.\n";
    RecordingSession::Environment environment;
    environment.sound = sound;
    environment.recordingsFolder = options->projectsDir;
    try {
        environment.backend = ScreenCaptureBackend::forThisSession();
    } catch (const CaptureError& error) {
        std::cerr << "Could not start screen capture: " << error.what()
                  << " Run this inside a desktop session, or set DISPLAY to an X server.\n";
        return 1;
    }
    RecordingSession session(std::move(environment));
    CaptureDevices devices(sound);

    RecordingSession::Options recording;
    recording.source = sourceOf(*options, session.backend());
    recording.cameraID = chosenCamera(*options, settings, devices);
    recording.microphoneID = chosenMicrophone(*options, settings, devices);
    recording.systemAudio = options->systemAudio.value_or(settings.systemAudioEnabled());
    recording.fps = options->fps.value_or(settings.captureFrameRate() == 30 ? 30 : 60);
    recording.countdown = options->countdown.value_or(std::max(0, settings.countdownSeconds()));
    recording.focusModeDND = settings.focusModeDND();
    recording.focusModeHideDesktop = settings.focusModeHideDesktop();

    session.camera().select(recording.cameraID);
    if (recording.cameraID && !session.camera().hasInput()) {
        std::cerr << "The camera " << *recording.cameraID << " is not available; recording without it.\n";
        recording.cameraID.reset();
    }
    session.microphone().select(recording.microphoneID);
    if (recording.microphoneID && !session.microphone().hasInput()) {
        if (sound) std::cerr << "The microphone " << *recording.microphoneID << " is not available; recording without it.\n";
        recording.microphoneID.reset();
    }
    RecordRun run(session, options->maxSeconds);
    return run.run(recording);
}

} // namespace recorder::cli
