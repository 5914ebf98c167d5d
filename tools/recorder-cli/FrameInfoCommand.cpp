#include "CliCommands.h"
#include "OpenPackage.h"

#include "json/JsonText.h"
#include "motion/FrameGeometry.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace recorder::cli {

namespace {

constexpr const char* usageLine = "Usage: recorder-cli frame-info PACKAGE --time T [--size WxH]";

using json = nlohmann::json;

// JSON can't hold NaN or infinity; such a number (from a damaged project)
// prints as null rather than failing the whole answer.
json number(double value) { return std::isfinite(value) ? json(value) : json(nullptr); }

json rect(const Rect& r) {
    return {{"x", number(r.x)}, {"y", number(r.y)}, {"width", number(r.width)}, {"height", number(r.height)}};
}

json zoomJson(const std::optional<FrameZoom>& zoom) {
    if (!zoom) return nullptr;
    return {{"id", zoom->id.string()},
            {"rect", rect(zoom->rect)},
            {"target", rect(zoom->target)},
            {"scale", number(zoom->transform.scale)},
            {"tx", number(zoom->transform.tx)},
            {"ty", number(zoom->transform.ty)},
            {"focus", {{"x", number(zoom->focus.x)}, {"y", number(zoom->focus.y)}}},
            {"zoomAmount", number(zoom->motion.zoomAmount)},
            {"panAmount", number(zoom->motion.panAmount)}};
}

json cameraJson(const CameraMotionState& camera) {
    return {{"from", std::string(enumName(camera.from))},
            {"to", std::string(enumName(camera.to))},
            {"progress", number(camera.progress)},
            {"rect", camera.rect ? rect(*camera.rect) : json(nullptr)},
            {"scale", number(camera.scale)},
            {"rotation", number(camera.rotation)},
            {"flipX", number(camera.flipX)},
            {"screenFrame", rect(camera.screenFrame)},
            {"screenVisible", camera.screenVisible},
            {"radiusMix", number(camera.radiusMix)}};
}

json frameJson(const FrameGeometry& frame, int width, int height) {
    json source = nullptr;
    if (frame.source) source = {{"clipID", frame.source->clip.id.string()}, {"time", number(frame.source->time)}};
    return {{"time", number(frame.time)},
            {"canvas", {{"width", width}, {"height", height}}},
            {"source", source},
            {"zoom", zoomJson(frame.zoom)},
            {"camera", cameraJson(frame.camera)}};
}

bool parseTime(const std::string& text, double& time) {
    const char* end = text.data() + text.size();
    auto [ptr, error] = std::from_chars(text.data(), end, time);
    return error == std::errc() && ptr == end && std::isfinite(time);
}

bool parseSize(const std::string& text, int& width, int& height) {
    char x = 0, extra = 0;
    if (std::sscanf(text.c_str(), "%d%c%d%c", &width, &x, &height, &extra) != 3 || (x != 'x' && x != 'X')) return false;
    return width > 0 && height > 0 && width <= 65536 && height <= 65536;
}

} // namespace

// The geometry of one frame: which clip plays, the zoom and its map, and
// where the camera and the screen stand. How support sees why a frame looks
// the way it does.
int runFrameInfo(const Arguments& args) {
    if (args.empty()) {
        std::cerr << usageLine << "\n";
        return 2;
    }
    std::optional<double> time;
    std::optional<std::pair<int, int>> size;
    for (std::size_t i = 1; i < args.size(); ++i) {
        bool hasValue = i + 1 < args.size();
        double t = 0;
        int w = 0, h = 0;
        if (args[i] == "--time" && hasValue && parseTime(args[i + 1], t)) {
            time = t;
        } else if (args[i] == "--size" && hasValue && parseSize(args[i + 1], w, h)) {
            size = {w, h};
        } else {
            std::cerr << "The option " << args[i] << " isn't understood: --time takes seconds of project time "
                      << "(like 12.5) and --size takes WxH (like 1920x1080).\n" << usageLine << "\n";
            return 2;
        }
        ++i;
    }
    if (!time) {
        std::cerr << "Say which frame with --time and its project time in seconds, like --time 12.5.\n"
                  << usageLine << "\n";
        return 2;
    }
    auto project = openPackage(args[0]);
    if (!project) return 1;
    auto [width, height] = size.value_or(std::pair{project->canvas.width, project->canvas.height});
    FrameGeometry frame = FrameGeometry::at(*project, *time, width, height);
    std::cout << JsonText::pretty(frameJson(frame, width, height)) << "\n";
    return 0;
}

} // namespace recorder::cli
