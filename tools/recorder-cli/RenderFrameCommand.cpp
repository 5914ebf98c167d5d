#include "CliArguments.h"
#include "CliCommands.h"
#include "OpenPackage.h"

#include "compose/FrameRenderer.h"
#include "events/EventLog.h"
#include "frames/ProjectFrameSources.h"
#include "log/Log.h"

#include <QGuiApplication>
#include <QImageWriter>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace recorder::cli {

namespace {

constexpr const char* usageLine = "Usage: recorder-cli render-frame PACKAGE --time T --out FILE.png [--size WxH]";
// Large enough for 8K and beyond; anything bigger is a typing slip, not a frame.
constexpr int largestSide = 16384;
constexpr long long largestArea = 16384LL * 8640;

struct Request {
    std::string package;
    std::optional<double> time;
    std::string out;
    std::optional<std::pair<int, int>> size;
};

bool parseTime(const std::string& text, double& time) {
    const char* end = text.data() + text.size();
    auto [ptr, error] = std::from_chars(text.data(), end, time);
    return error == std::errc() && ptr == end && std::isfinite(time);
}

// Says what is wrong with a size, or nothing when it is fine.
std::optional<std::string> sizeProblem(const std::string& text, int& width, int& height) {
    char x = 0, extra = 0;
    long long w = 0, h = 0;
    if (std::sscanf(text.c_str(), "%lld%c%lld%c", &w, &x, &h, &extra) != 3 || (x != 'x' && x != 'X'))
        return "The size " + text + " isn't understood: give it as WxH, like 1920x1080.";
    if (w < 1 || h < 1 || w > largestSide || h > largestSide || w * h > largestArea)
        return "The size " + text + " can't be rendered: each side must be 1 to " + std::to_string(largestSide) +
               " pixels, at most " + std::to_string(largestArea / 1000000) + " million pixels in all.";
    width = int(w);
    height = int(h);
    return std::nullopt;
}

// Exit code 2 with a sentence when the arguments don't make a request.
std::optional<Request> parse(const Arguments& args, int& status) {
    status = 2;
    if (args.empty()) {
        std::cerr << usageLine << "\n";
        return std::nullopt;
    }
    Request request{args[0], std::nullopt, {}, std::nullopt};
    for (std::size_t i = 1; i < args.size(); i += 2) {
        const std::string& option = args[i];
        if (i + 1 >= args.size()) {
            std::cerr << "The option " << option << " needs a value.\n" << usageLine << "\n";
            return std::nullopt;
        }
        const std::string& value = args[i + 1];
        double t = 0;
        int w = 0, h = 0;
        if (option == "--time" && parseTime(value, t)) {
            request.time = t;
        } else if (option == "--out") {
            request.out = value;
        } else if (option == "--size") {
            if (auto problem = sizeProblem(value, w, h)) {
                std::cerr << *problem << "\n";
                return std::nullopt;
            }
            request.size = {w, h};
        } else {
            std::cerr << "The option " << option << " isn't understood: --time takes seconds of project time (like "
                      << "12.5), --out a PNG file and --size WxH (like 1920x1080).\n" << usageLine << "\n";
            return std::nullopt;
        }
    }
    if (!request.time || request.out.empty()) {
        std::cerr << "Say which frame with --time (seconds of project time) and where it goes with --out FILE.png.\n"
                  << usageLine << "\n";
        return std::nullopt;
    }
    status = 0;
    return request;
}

} // namespace

// One frame of a package at a project time, as the export would draw it,
// to a PNG file.
int runRenderFrame(const Arguments& args) {
    int status = 0;
    auto request = parse(args, status);
    if (!request) return status;
    auto project = openPackage(request->package);
    if (!project) return 1;
    auto gui = headlessGui();
    auto previous = Log::setHandler([](Log::Level, std::string_view, std::string_view message) {
        std::cerr << message << " That layer is left out of the frame.\n";
    });
    auto [width, height] = request->size.value_or(std::pair{project->canvas.width, project->canvas.height});
    ProjectFrameSources sources(request->package);
    FrameRenderer renderer;
    sources.prepareBackground(renderer, *project);
    auto events = EventLog::load(*project, request->package);
    QImage frame = renderer.render(*project, sources.inputs(*project, *request->time), events ? &*events : nullptr,
                                   width, height);
    Log::setHandler(previous);
    QImageWriter writer(QString::fromStdString(request->out), "png");
    if (frame.isNull() || !writer.write(frame)) {
        std::cerr << "The frame couldn't be written to " << request->out
                  << ". Check that its folder exists and that you may write there.\n";
        return 1;
    }
    return 0;
}

} // namespace recorder::cli
