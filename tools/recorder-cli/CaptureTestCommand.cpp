#include "CliArguments.h"
#include "CliCommands.h"

#include "clock/HostClock.h"
#include "cursor/CursorTracker.h"
#include "json/JsonText.h"
#include "log/Log.h"
#include "screen/ScreenCapturer.h"

extern "C" {
#include <libavutil/log.h>
}

#include <atomic>
#include <charconv>
#include <cmath>
#include <csignal>
#include <fstream>
#include <iostream>
#include <thread>

namespace recorder::cli {

namespace {

constexpr const char* usageLine =
    "Usage: recorder-cli capture-test --display ID|--window ID|--area X,Y,W,H --seconds N --out DIR [--fps N]";

std::atomic<bool> interrupted{false};

struct Options {
    std::optional<std::uint32_t> display;
    std::optional<std::uint32_t> window;
    std::optional<Rect> area;
    double seconds = 0;
    int fps = 60;
    std::filesystem::path out;
};

std::optional<Options> parse(const Arguments& args) {
    Options options;
    for (std::size_t i = 0; i < args.size(); i += 2) {
        if (i + 1 >= args.size()) return std::nullopt;
        const std::string& name = args[i];
        const std::string& value = args[i + 1];
        bool ok = true;
        if (name == "--display") ok = parseNumber(value, options.display.emplace());
        else if (name == "--window") ok = parseNumber(value, options.window.emplace());
        else if (name == "--area") ok = parseArea(value, options.area.emplace());
        else if (name == "--seconds") ok = parseNumber(value, options.seconds) && options.seconds > 0;
        else if (name == "--fps") ok = parseNumber(value, options.fps) && options.fps > 0 && options.fps <= 120;
        else if (name == "--out") options.out = value;
        else ok = false;
        if (!ok) return std::nullopt;
    }
    int sources = (options.window ? 1 : 0) + (options.area || options.display ? 1 : 0);
    if (sources != 1 || options.seconds <= 0 || options.out.empty()) return std::nullopt;
    return options;
}

// An area without --display lies on the first display.
CaptureSource sourceOf(const Options& options, ScreenCaptureBackend& backend) {
    if (options.window) {
        auto window = backend.window(*options.window);
        return CaptureSource::window(*options.window, window ? window->title : "", window ? window->app : "");
    }
    if (!options.area) return CaptureSource::display(*options.display);
    std::uint32_t display = 0;
    if (options.display) {
        display = *options.display;
    } else {
        auto content = backend.shareableContent();
        if (!content.displays.empty()) display = content.displays.front().id;
    }
    return CaptureSource::area(display, *options.area);
}

void writeAtomically(const std::filesystem::path& file, const std::string& bytes) {
    auto temporary = file;
    temporary += ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out << bytes;
        if (!out.flush()) throw std::runtime_error("Could not write " + file.string() + ".");
    }
    std::filesystem::rename(temporary, file);
}

// Waits for the first picture (at most 2 s, as a recording does), then the
// requested time, a stop by itself, or Ctrl-C.
void record(ScreenCapturer& capturer, CursorTracker& tracker, double seconds, const std::atomic<bool>& streamStopped) {
    using namespace std::chrono_literals;
    for (int i = 0; i < 100 && !capturer.firstSampleHostSeconds() && !streamStopped; ++i) std::this_thread::sleep_for(20ms);
    tracker.setZeroHostSeconds(capturer.firstSampleHostSeconds().value_or(HostClock::seconds()));
    tracker.start(capturer.captureRect(), capturer.displayFrame());
    double until = HostClock::seconds() + seconds;
    while (HostClock::seconds() < until && !streamStopped && !interrupted) std::this_thread::sleep_for(10ms);
}

} // namespace

// Records a display, window or area with the real capturer, sink and
// tracker into DIR: "screen.mov" and "events.json".
int runCaptureTest(const Arguments& args) {
    auto options = parse(args);
    if (!options) {
        std::cerr << "Give one source, a positive --seconds and an --out folder. " << usageLine << "\n";
        return 2;
    }
    av_log_set_level(AV_LOG_ERROR);
    Log::setHandler([](Log::Level level, std::string_view category, std::string_view message) {
        if (level == Log::Level::error) std::cerr << "[" << category << "] " << message << "\n";
    });
    std::error_code madeFolder;
    std::filesystem::create_directories(options->out, madeFolder);
    if (madeFolder) {
        std::cerr << "Could not make the folder " << options->out << " (" << madeFolder.message()
                  << "). Choose a folder you can write to.\n";
        return 1;
    }
    std::signal(SIGINT, [](int) { interrupted = true; });
    std::signal(SIGTERM, [](int) { interrupted = true; });

    std::atomic<bool> streamStopped{false};
    std::string stopSentence;
    std::mutex sentenceLock;
    try {
        auto backend = ScreenCaptureBackend::forThisSession();
        ScreenCapturer capturer(sourceOf(*options, *backend), options->fps, false, options->out, backend);
        capturer.setOnStreamStopped([&](const CaptureError& error) {
            std::lock_guard lock(sentenceLock);
            stopSentence = error.what();
            streamStopped = true;
        });
        try {
            capturer.start();
        } catch (const CaptureError& error) {
            std::cerr << "Could not start screen capture: " << error.what()
                      << " Run recorder-cli sources to see what can be recorded.\n";
            return 1;
        }
        CursorTracker tracker;
        record(capturer, tracker, options->seconds, streamStopped);
        EventLog log = tracker.stop();
        auto result = capturer.stop();
        writeAtomically(options->out / "events.json", log.encoded());
        nlohmann::json summary = {{"duration", std::round((result ? result->duration : 0) * 1000) / 1000},
                                  {"frames", capturer.frameCount()},
                                  {"dropped", result ? result->droppedFrames : 0}};
        std::cout << JsonText::compact(summary) << "\n";
        if (streamStopped) {
            std::lock_guard lock(sentenceLock);
            std::cerr << stopSentence << " What was recorded until then is in " << options->out / "screen.mov" << ".\n";
            return 1;
        }
        return 0;
    } catch (const CaptureError& error) {
        std::cerr << error.what() << " Run this inside a desktop session, or set DISPLAY to an X server.\n";
        return 1;
    }
}

} // namespace recorder::cli
