// The cost of overlays in a 1080p frame: a text raster made from nothing
// (a cache miss: font lookup, layout, outline, shadow), and a warm frame
// with one text item and one arrow with a shadow, both against the bare
// reference frame (gradient, shadow, screen, corners) in the same run.
#include "compose/FrameRenderer.h"
#include "model/TextPreset.h"
#include "overlay/TextRaster.h"
#include "support/RatioReporter.h"

#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QPainter>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

using namespace recorder;

namespace {

const std::string sample = "Ship it \xF0\x9F\x9A\x80";

QImage screenPicture() {
    QImage image(1920, 1200, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(246, 246, 242));
    QPainter painter(&image);
    painter.setPen(QColor(40, 90, 200));
    for (int x = 0; x < 1920; x += 120) painter.drawLine(x, 0, x, 1200);
    for (int y = 0; y < 1200; y += 40) painter.fillRect(40, y + 10, 900 + (y * 7) % 700, 14, QColor(30, 30, 30));
    return image;
}

struct Scene {
    Project project{"Overlays", {1920, 1080, 60}, "1.0"};
    FrameInputs inputs;
};

Scene bareScene() {
    Scene scene;
    scene.inputs.time = 1;
    scene.inputs.screen = SourceImage(screenPicture());
    return scene;
}

Scene overlayScene() {
    Scene scene = bareScene();
    const TextPreset& beast = *TextPreset::find("beast");
    MediaItem text;
    text.id = Uuid::random();
    text.kind = AssetKind::text;
    text.start = 0;
    text.end = 10;
    text.frame = {0.3, 0.1, 0.4, 0.15};
    text.text = sample;
    text.textStyle = beast.style;
    text.textColor = beast.textColor;
    MediaItem arrow;
    arrow.id = Uuid::random();
    arrow.kind = AssetKind::shape;
    arrow.start = 0;
    arrow.end = 10;
    arrow.frame = {0.55, 0.6, 0.25, 0.2};
    ShapeSpec spec;
    spec.direction = ShapeDirection::downRight;
    spec.shadow = true;
    arrow.shape = spec;
    scene.project.media = {text, arrow};
    // As the frame sources hand it over: made once, kept while unchanged.
    scene.inputs.mediaImages[text.id] = SourceImage(TextRaster::make(*text.text, *text.textColor, text.textStyle));
    return scene;
}

void renderFrames(benchmark::State& state, const Scene& scene) {
    FrameRenderer renderer;
    benchmark::DoNotOptimize(renderer.render(scene.project, scene.inputs, nullptr, 1920, 1080));
    for (auto _ : state) benchmark::DoNotOptimize(renderer.render(scene.project, scene.inputs, nullptr, 1920, 1080));
}

void BareReferenceFrame(benchmark::State& state) { renderFrames(state, bareScene()); }
void WarmFrameTextAndArrow(benchmark::State& state) { renderFrames(state, overlayScene()); }

void TextRasterMiss(benchmark::State& state) {
    const TextPreset& beast = *TextPreset::find("beast");
    for (auto _ : state) benchmark::DoNotOptimize(TextRaster::make(sample, beast.textColor, beast.style));
}

void PlainTextRasterMiss(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(TextRaster::make(sample, {1, 1, 1, 1}, std::nullopt));
}

// Wall-clock ratios suffer on a shared, loaded machine; the process's CPU
// time (Qt may convert pictures on helper threads) is printed beside them.
class OverlayReporter : public bench::RatioReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs)
            if (run.run_type == Run::RT_Iteration)
                cpuMilliseconds_[run.benchmark_name()] = run.GetAdjustedCPUTime(); // all in milliseconds
        RatioReporter::ReportRuns(runs);
    }

    // Names as registered; runs carry a "/process_time" suffix.
    void printRatios(std::string measured, std::string baseline, const char* label) const {
        measured += "/process_time";
        baseline += "/process_time";
        printRatio(measured, baseline, label);
        auto cpu = [this](const std::string& name) {
            auto found = cpuMilliseconds_.find(name);
            return found == cpuMilliseconds_.end() ? 0.0 : found->second;
        };
        double a = cpu(measured), b = cpu(baseline);
        if (b > 0) std::printf("  CPU: %.3f ms vs %.3f ms = %.2fx\n", a, b, a / b);
    }

private:
    std::map<std::string, double> cpuMilliseconds_;
};

} // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication app(argc, argv);
    using Function = void (*)(benchmark::State&);
    const std::pair<const char*, Function> benchmarks[] = {{"BareReferenceFrame", BareReferenceFrame},
                                                           {"WarmFrameTextAndArrow", WarmFrameTextAndArrow},
                                                           {"TextRasterMiss", TextRasterMiss},
                                                           {"PlainTextRasterMiss", PlainTextRasterMiss}};
    for (auto [name, function] : benchmarks)
        benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
    benchmark::Initialize(&argc, argv);
    // RECORDER_BENCH_FRAME=FILE.png writes the measured overlay frame, to look at.
    if (const char* picture = std::getenv("RECORDER_BENCH_FRAME")) {
        Scene scene = overlayScene();
        FrameRenderer renderer;
        renderer.render(scene.project, scene.inputs, nullptr, 1920, 1080).save(picture);
    }
    OverlayReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios("WarmFrameTextAndArrow", "BareReferenceFrame", "warm frame with text and arrow / bare frame");
    reporter.printRatios("TextRasterMiss", "BareReferenceFrame", "text raster miss (beast, emoji) / bare frame");
    reporter.printRatios("PlainTextRasterMiss", "BareReferenceFrame", "text raster miss (no style) / bare frame");
    benchmark::Shutdown();
}
