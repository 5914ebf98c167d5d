// Exports a styled 30 s 1080p30 project to H.264 (background, padding,
// shadow, rounded corners, two zooms with motion blur, cursor, camera
// bubble, a text item, music) and, in the same run, transcodes its bare
// screen recording with the ffmpeg program at the same encoder settings.
// Prints both wall times and their ratio, then the GIF export of the same
// project: its time and file size. The media are made once in
// /tmp/recorder-bench-export/.
#include "events/EventLog.h"
#include "export/ExportFrameRenderer.h"
#include "export/Exporter.h"
#include "package/ProjectPackage.h"
#include "support/RatioReporter.h"

#include <benchmark/benchmark.h>

#include <QGuiApplication>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

using namespace recorder;
namespace fs = std::filesystem;

namespace {

const fs::path work = "/tmp/recorder-bench-export";
const fs::path package = work / "Bench.tidereel";
constexpr double seconds = 30;

void run(const std::string& command) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

std::string ffmpeg() { return "ffmpeg -hide_banner -loglevel error -nostdin -y "; }

// A screen recording like the recorder makes: a page of text scrolling in a
// window, a video playing beside it; H.264 veryfast, no B-frames, a key
// frame every 2 s.
void makeMedia(const fs::path& assets) {
    fs::create_directories(assets);
    if (!fs::exists(assets / "screen.mov")) {
        fs::path page = work / "page.txt";
        std::ofstream text(page);
        for (int line = 0; line < 120; ++line)
            text << "    " << line << "  void Exporter::composeFrames(std::int64_t frames, FrameHandoff& handoff) {\n";
        text.close();
        run(ffmpeg() + "-f lavfi -i \"color=c=0xf2f2f2:s=1920x1080:r=30:d=30,drawbox=x=0:y=0:w=1920:h=48:color=0x30343a:t=fill,"
                       "drawtext=textfile=" + page.string() + ":fontsize=26:fontcolor=0x202020:x=40:y=80-t*40:line_spacing=8\" "
                       "-f lavfi -i testsrc2=s=640x360:r=30:d=30 -filter_complex \"[0][1]overlay=1220:120\" "
                       "-c:v libx264 -preset veryfast -bf 0 -g 60 -b:v 16M -pix_fmt yuv420p '" + (assets / "screen.mov").string() + "'");
    }
    if (!fs::exists(assets / "camera.mov"))
        run(ffmpeg() + "-f lavfi -i testsrc2=s=1280x720:r=30:d=30 -c:v libx264 -preset veryfast -bf 0 -g 60 -pix_fmt yuv420p '" +
            (assets / "camera.mov").string() + "'");
    if (!fs::exists(assets / "music.m4a"))
        run(ffmpeg() + "-f lavfi -i \"aevalsrc=0.2*sin(2*PI*220*t)+0.1*sin(2*PI*330*t)|0.2*sin(2*PI*277*t):s=48000:d=30\" "
                       "-c:a aac '" + (assets / "music.m4a").string() + "'");
}

Asset asset(AssetKind kind, const std::string& file, std::optional<Size> pixels = std::nullopt) {
    Asset a;
    a.id = Uuid::random();
    a.kind = kind;
    a.relativePath = file;
    a.duration = seconds;
    a.pixelSize = pixels;
    return a;
}

// The pointer circling over the page with a click every 3 s.
EventLog pointerMoves() {
    EventLog log;
    for (int i = 0; i <= int(seconds * 120); ++i) {
        double t = i / 120.0;
        log.samples.push_back({t, {0.5 + 0.3 * std::cos(t * 0.7), 0.5 + 0.25 * std::sin(t * 0.9)}});
    }
    for (double t = 1; t < seconds; t += 3) {
        Point at{0.5 + 0.3 * std::cos(t * 0.7), 0.5 + 0.25 * std::sin(t * 0.9)};
        log.clicks.push_back({t, at, ClickEvent::Button::left, true});
        log.clicks.push_back({t + 0.1, at, ClickEvent::Button::left, false});
    }
    return log;
}

ZoomSegment zoom(double start, double end, Rect rect) {
    ZoomSegment z;
    z.id = Uuid::random();
    z.start = start;
    z.end = end;
    z.rect = rect;
    z.inDuration = 0.8;
    z.outDuration = 0.8;
    return z;
}

Project makeProject() {
    makeMedia(ProjectPackage::assetsURL(package));
    Project project("Export benchmark", {1920, 1080, 30}, "1.0");
    Asset screen = asset(AssetKind::screen, "screen.mov", Size{1920, 1080});
    Asset camera = asset(AssetKind::camera, "camera.mov", Size{1280, 720});
    Asset music = asset(AssetKind::audio, "music.m4a");
    Asset events = asset(AssetKind::events, "events.json");
    std::ofstream(ProjectPackage::assetsURL(package) / "events.json") << pointerMoves().encoded();
    project.assets = {screen, camera, music, events};
    project.clips.push_back({Uuid::random(), screen.id, 0, seconds, 1});
    project.style.motionBlur = 0.5;
    project.camera.layout = CameraLayout::bubbleBottomRight;
    project.zooms = {zoom(4, 10, {0.1, 0.1, 0.5, 0.5}), zoom(16, 23, {0.45, 0.4, 0.45, 0.45})};
    MediaItem title;
    title.id = Uuid::random();
    title.kind = AssetKind::text;
    title.text = "Export benchmark";
    title.textColor = RGBAColor{0.1, 0.12, 0.2, 1};
    title.textStyle = TextStyle{};
    title.start = 1;
    title.end = 28;
    title.frame = {0.05, 0.04, 0.4, 0.1};
    MediaItem song;
    song.id = Uuid::random();
    song.assetID = music.id;
    song.kind = AssetKind::audio;
    song.start = 0;
    song.end = seconds;
    song.volume = 0.6;
    song.fadeIn = 1;
    song.fadeOut = 2;
    project.media = {title, song};
    ProjectPackage::save(project, package);
    return project;
}

ExportSettings settingsFor(ExportFormat format, const fs::path& out) {
    ExportSettings s;
    s.format = format;
    s.width = s.decision.width = 1920;
    s.height = s.decision.height = 1080;
    s.decision.durationSeconds = seconds;
    s.fps = 30;
    s.gifFPS = 15;
    s.outputURL = out;
    return s;
}

void exportAs(const Project& project, ExportFormat format, const fs::path& out) {
    auto s = settingsFor(format, out);
    Exporter exporter(project, package, s, std::make_unique<ExportFrameRenderer>(project, package, s.width, s.height));
    exporter.run();
}

void BM_ExportH264(benchmark::State& state, const Project* project) {
    for (auto _ : state) exportAs(*project, ExportFormat::mp4H264, work / "export.mp4");
}

// The same encoder, preset, bit rate, key-frame interval and B-frames as the
// export (x264's veryfast default of 3), on the bare screen recording.
void BM_Transcode(benchmark::State& state) {
    auto s = settingsFor(ExportFormat::mp4H264, work / "transcode.mp4");
    std::string command = ffmpeg() + "-i '" + (ProjectPackage::assetsURL(package) / "screen.mov").string() +
                          "' -c:v libx264 -preset veryfast -profile:v high -b:v " + std::to_string(s.averageBitRate()) +
                          " -g " + std::to_string(s.maxKeyFrameInterval()) + " -bf 3 '" + s.outputURL.string() + "'";
    for (auto _ : state) run(command);
}

void BM_ExportGif(benchmark::State& state, const Project* project) {
    for (auto _ : state) exportAs(*project, ExportFormat::gif, work / "export.gif");
    state.counters["MB"] = double(fs::file_size(work / "export.gif")) / 1e6;
}

} // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    Project project = makeProject();
    benchmark::RegisterBenchmark("export", BM_ExportH264, &project)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
    benchmark::RegisterBenchmark("transcode", BM_Transcode)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
    benchmark::RegisterBenchmark("gif", BM_ExportGif, &project)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
    recorder::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio("export/iterations:1/real_time", "transcode/iterations:1/real_time",
                        "Styled export vs bare ffmpeg transcode of the screen (target <= 1.15)");
    double gifSeconds = reporter.milliseconds("gif/iterations:1/real_time") / 1000;
    if (gifSeconds > 0)
        std::printf("GIF export (1080p, 15 fps, 450 frames): %.1f s, %.1f MB\n", gifSeconds,
                    double(fs::file_size(work / "export.gif")) / 1e6);
    return 0;
}
