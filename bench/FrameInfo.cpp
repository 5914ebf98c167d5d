// The geometry of one frame (what `recorder-cli frame-info` prints): 10,000
// frame times of a project with 500 zooms and camera changes, against the
// same project without zooms.
#include "motion/FrameGeometry.h"
#include "support/RatioReporter.h"

#include <benchmark/benchmark.h>

using namespace recorder;

namespace {

constexpr int frames = 10'000;
constexpr double length = 1500;

Project projectWithZooms(int count) {
    Project project("Benchmark", {1920, 1080, 60}, "1.0");
    Asset screen;
    screen.id = Uuid::random();
    screen.relativePath = "screen.mov";
    screen.pixelSize = Size{3840, 2160};
    Asset camera = screen;
    camera.id = Uuid::random();
    camera.kind = AssetKind::camera;
    camera.pixelSize = Size{1280, 720};
    project.assets = {screen, camera};
    for (int i = 0; i < 10; ++i) project.clips.push_back({Uuid::random(), screen.id, i * 160.0, i * 160.0 + 150, 1});
    for (int i = 0; i < count; ++i) {
        ZoomSegment zoom;
        zoom.id = Uuid::random();
        zoom.start = i * 3.0;
        zoom.end = zoom.start + 2.5;
        zoom.rect = {0.1 + (i % 5) * 0.1, 0.2, 0.5, 0.5};
        zoom.inDuration = zoom.outDuration = 0.6;
        zoom.keyframes = {{Uuid::random(), zoom.start + 1.2, {0.2, 0.3, 0.5, 0.5}}};
        project.zooms.push_back(zoom);
    }
    for (int i = 0; i < 50; ++i)
        project.camera.keyframes.push_back(
            {Uuid::random(), i * 30.0, i % 2 ? CameraLayout::sideBySide : CameraLayout::bubbleTopLeft});
    return project;
}

void evaluateFrames(benchmark::State& state, const Project& project) {
    for (auto _ : state)
        for (int i = 0; i < frames; ++i)
            benchmark::DoNotOptimize(FrameGeometry::at(project, i * (length / frames), 1920, 1080));
}

void NoZooms(benchmark::State& state) {
    Project project = projectWithZooms(0);
    evaluateFrames(state, project);
}

void FiveHundredZooms(benchmark::State& state) {
    Project project = projectWithZooms(500);
    evaluateFrames(state, project);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::RegisterBenchmark("NoZooms", NoZooms)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("FiveHundredZooms", FiveHundredZooms)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    recorder::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("per frame: %.2f us with 500 zooms, %.2f us without\n",
                reporter.milliseconds("FiveHundredZooms") * 1000 / frames,
                reporter.milliseconds("NoZooms") * 1000 / frames);
    reporter.printRatio("FiveHundredZooms", "NoZooms", "10,000 frames with 500 zooms / without zooms");
    benchmark::Shutdown();
}
