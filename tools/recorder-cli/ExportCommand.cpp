#include "CliArguments.h"
#include "CliCommands.h"
#include "OpenPackage.h"
#include "Settings.h"

#include "brand/Brand.h"
#include "export/ExportError.h"
#include "export/ExportFrameRenderer.h"
#include "export/ExportViewModel.h"
#include "export/Exporter.h"
#include "json/EnumNames.h"
#include "log/Log.h"

#include <QGuiApplication>

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace recorder::cli {

namespace {

constexpr const char* usageLine =
    "Usage: recorder-cli export PACKAGE [--out FILE] [--format mp4H264|mp4HEVC|gif] [--preset ID] [--fps 30|60]";

struct Request {
    std::filesystem::path package;
    std::optional<std::filesystem::path> out;
    ExportFormat format = ExportFormat::mp4H264;
    ExportPreset preset = ExportPreset::source();
    int fps = 30;
};

std::optional<ExportFormat> formatNamed(const std::string& name) {
    for (ExportFormat format : {ExportFormat::mp4H264, ExportFormat::mp4HEVC, ExportFormat::gif})
        if (EnumNames<ExportFormat>::names[std::size_t(format)] == name) return format;
    return std::nullopt;
}

std::string presetIDs() {
    std::string ids;
    for (const auto& preset : ExportPreset::all()) ids += (ids.empty() ? "" : ", ") + preset.id;
    return ids;
}

// A sentence on stderr and exit code 2 when the arguments don't make a request.
std::optional<Request> parse(const Arguments& args) {
    if (args.empty() || args[0].starts_with("--")) {
        std::cerr << usageLine << "\n";
        return std::nullopt;
    }
    Request request;
    request.package = args[0];
    for (std::size_t i = 1; i < args.size(); i += 2) {
        const std::string& option = args[i];
        if (i + 1 >= args.size()) {
            std::cerr << "The option " << option << " needs a value.\n" << usageLine << "\n";
            return std::nullopt;
        }
        const std::string& value = args[i + 1];
        if (option == "--out") {
            request.out = value;
        } else if (option == "--format") {
            auto format = formatNamed(value);
            if (!format) {
                std::cerr << "The format " << value << " isn't known: choose mp4H264, mp4HEVC or gif.\n";
                return std::nullopt;
            }
            request.format = *format;
        } else if (option == "--preset") {
            auto preset = ExportPreset::withID(value);
            if (!preset) {
                std::cerr << "The size " << value << " isn't known: choose one of " << presetIDs() << ".\n";
                return std::nullopt;
            }
            request.preset = *preset;
        } else if (option == "--fps") {
            if (value != "30" && value != "60") {
                std::cerr << "The frame rate " << value << " isn't offered: choose 30 or 60.\n";
                return std::nullopt;
            }
            request.fps = std::stoi(value);
        } else {
            std::cerr << "The option " << option << " isn't understood.\n" << usageLine << "\n";
            return std::nullopt;
        }
    }
    return request;
}

// The export that Ctrl-C stops. Cancelling only stores a flag, which a
// signal handler may do.
Exporter* running = nullptr;

void cancelOnSignal(int) {
    if (running) running->cancel();
}

// A bar with the time left on a terminal; elsewhere a line per 5 %.
class ProgressDisplay {
public:
    ProgressDisplay() : terminal_(isatty(STDERR_FILENO) == 1), start_(std::chrono::steady_clock::now()) {}

    void show(double progress) {
        int percent = int(progress * 100);
        if (!terminal_) {
            for (int step = lastStep_ + 5; step <= percent; step += 5) std::fprintf(stderr, "%d%%\n", step);
            lastStep_ = std::max(lastStep_, percent - percent % 5);
            return;
        }
        constexpr int width = 30;
        int filled = int(progress * width);
        std::string bar = std::string(std::size_t(filled), '#') + std::string(std::size_t(width - filled), ' ');
        std::fprintf(stderr, "\r[%s] %3d%% %s", bar.c_str(), percent, timeLeft(progress).c_str());
        if (progress >= 1) std::fprintf(stderr, "\n");
    }

private:
    std::string timeLeft(double progress) const {
        double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
        if (progress <= 0.01 || progress >= 1) return "            ";
        int left = int(elapsed / progress * (1 - progress) + 0.5);
        char text[32];
        std::snprintf(text, sizeof text, "%d:%02d left  ", left / 60, left % 60);
        return text;
    }

    bool terminal_;
    std::chrono::steady_clock::time_point start_;
    int lastStep_ = 0;
};

ExportSettings settingsFor(const Request& request, const Project& project) {
    ExportViewModel sheet;
    sheet.format = request.format;
    sheet.preset = request.preset;
    sheet.fps = request.fps;
    if (!request.out) {
        sheet.destination = Settings().exportDirectory();
        std::error_code ignored;
        std::filesystem::create_directories(sheet.destination, ignored);
    }
    ExportSettings settings = sheet.settings(project, Date::now(), Brand::shared().display);
    if (request.out) settings.outputURL = *request.out;
    return settings;
}

} // namespace

// Exports a package to an MP4 or GIF file and prints the file's path.
int runExport(const Arguments& args) {
    auto request = parse(args);
    if (!request) return 2;
    auto project = openPackage(request->package);
    if (!project) return 1;
    ExportSettings settings = settingsFor(*request, *project);
    // Said before anything starts, as the exporter would say it.
    if (settings.frameCount() < 1) {
        std::cerr << ExportError(ExportError::Kind::empty).what() << "\n";
        return 1;
    }
    auto gui = headlessGui();
    auto previous = Log::setHandler([](Log::Level level, std::string_view, std::string_view message) {
        if (level == Log::Level::error) std::cerr << message << "\n";
    });
    Exporter exporter(*project, request->package, settings,
                      std::make_unique<ExportFrameRenderer>(*project, request->package, settings.width, settings.height));
    ProgressDisplay display;
    exporter.setProgressHandler([&display](double progress) { display.show(progress); });
    running = &exporter;
    auto oldHandler = std::signal(SIGINT, cancelOnSignal);
    int status = 0;
    try {
        exporter.run();
        std::cout << settings.outputURL.string() << "\n";
    } catch (const std::exception& failure) {
        auto exportError = dynamic_cast<const ExportError*>(&failure);
        bool cancelled = exportError && exportError->kind() == ExportError::Kind::cancelled;
        bool empty = exportError && exportError->kind() == ExportError::Kind::empty;
        // Nothing half-written stays behind; a folder at that path is not ours to remove.
        std::error_code ignored;
        if (!empty && std::filesystem::is_regular_file(settings.outputURL, ignored))
            std::filesystem::remove(settings.outputURL, ignored);
        if (cancelled && isatty(STDERR_FILENO) == 1) std::cerr << "\n";
        std::cerr << failure.what() << "\n";
        status = cancelled ? 130 : 1;
    }
    std::signal(SIGINT, oldHandler);
    running = nullptr;
    Log::setHandler(previous);
    return status;
}

} // namespace recorder::cli
