// One 1080p frame of a reference project (gradient, shadow, a 2880×1800
// screen of small text with rounded corners, a zoom mid-ramp, a camera
// bubble) against one plain QPainter::drawImage of the same screen into the
// same rectangle; what the cursor (smoothed over a one-hour event log) with
// three live click ripples, and a blur region, add to that frame; then the
// quality of the screen's resampling against QImage::scaled with
// Qt::SmoothTransformation.
#include "compose/FrameRenderer.h"
#include "cursor/CursorImages.h"
#include "cursor/CursorLayer.h"
#include "cursor/SmoothedLogCache.h"

#include <benchmark/benchmark.h>

#include <QFont>
#include <QGuiApplication>
#include <QPainter>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <map>
#include <string>

using namespace recorder;

namespace {

constexpr double rampMiddle = 0.6;

QImage screenOfText() {
    QImage image(2880, 1800, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(246, 246, 242));
    QPainter painter(&image);
    QFont font("DejaVu Sans");
    font.setPixelSize(13);
    painter.setFont(font);
    painter.setPen(QColor(30, 30, 30));
    for (int y = 20; y < 1800; y += 17)
        for (int x = 10; x < 2880; x += 720)
            painter.drawText(x, y, "static void compose(Frame& frame, int x) { return render(x, 0x1F); } //");
    painter.setPen(QColor(40, 90, 200));
    for (int x = 0; x < 2880; x += 240) painter.drawLine(x, 0, x, 1800);
    return image;
}

QImage cameraPicture() {
    QImage image(1280, 720, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    for (int i = 0; i < 8; ++i) painter.fillRect(i * 160, 0, 160, 720, QColor::fromHsv(i * 45, 200, 230));
    return image;
}

const QImage& screenImage() {
    static const QImage image = screenOfText();
    return image;
}

// The same screen as a decoder delivers it: its own memory, known opaque.
const FrameImage& decodedScreen() {
    static const FrameImage frame = [] {
        const QImage& image = screenImage();
        FrameImage copy = FrameImage::allocate(image.width(), image.height(), true);
        for (int y = 0; y < image.height(); ++y)
            std::memcpy(copy.mutableRow(y), image.constScanLine(y), std::size_t(image.width()) * 4);
        return copy;
    }();
    return frame;
}

Project referenceProject(double motionBlur) {
    Project project("Reference", {1920, 1080, 60}, "1.0");
    project.style.motionBlur = motionBlur;
    ZoomSegment zoom;
    zoom.start = 0;
    zoom.end = 4;
    zoom.rect = {0.25, 0.3, 0.5, 0.5};
    zoom.inDuration = 1.2;
    zoom.outDuration = 1.2;
    project.zooms.push_back(zoom);
    return project;
}

FrameInputs referenceInputs() {
    FrameInputs inputs;
    inputs.time = rampMiddle;
    inputs.screen = SourceImage(screenImage());
    inputs.camera = SourceImage(cameraPicture());
    return inputs;
}

void DrawImageBaseline(benchmark::State& state) {
    FramePlan plan = FramePlan::make(referenceProject(0), rampMiddle, {QSizeF(2880, 1800), QSizeF(1280, 720), false},
                                     1920, 1080);
    QImage canvas(1920, 1080, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QPainter painter(&canvas);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(plan.screenRect, screenImage());
    }
}

void renderFrames(benchmark::State& state, double motionBlur, bool newSourceEachFrame) {
    Project project = referenceProject(motionBlur);
    FrameInputs inputs = referenceInputs();
    FrameRenderer renderer;
    benchmark::DoNotOptimize(renderer.render(project, inputs, nullptr, 1920, 1080));
    for (auto _ : state) {
        // A new frame each time: nothing kept from the last one, as in playback.
        if (newSourceEachFrame) inputs.screen = SourceImage(decodedScreen());
        benchmark::DoNotOptimize(renderer.render(project, inputs, nullptr, 1920, 1080));
    }
}

void FrameWithoutMotionBlur(benchmark::State& state) { renderFrames(state, 0, false); }

// The reference frame lands at source time 1800.6 of a one-hour recording.
constexpr double hour = 3600;
constexpr double cursorSourceTime = 1800 + rampMiddle;

// One hour of pointer samples at 120 Hz wandering over the screen, a left
// click every two seconds, and three presses still rippling at the frame.
EventLog hourLog() {
    EventLog log;
    const int count = int(hour * 120);
    log.samples.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i) {
        double t = i / 120.0;
        log.samples.push_back({t, {0.5 + 0.4 * std::sin(t * 0.7), 0.5 + 0.4 * std::sin(t * 1.1 + 1)}});
    }
    for (double t = 1; t < hour; t += 2) {
        if (std::fabs(t - cursorSourceTime) < 1) continue;
        log.clicks.push_back({t, {0.5, 0.5}, ClickEvent::Button::left, true});
        log.clicks.push_back({t + 0.1, {0.5, 0.5}, ClickEvent::Button::left, false});
    }
    for (double age : {0.05, 0.15, 0.3}) {
        log.clicks.push_back({cursorSourceTime - age, {0.3 + age, 0.4}, ClickEvent::Button::left, true});
        log.clicks.push_back({cursorSourceTime - age + 0.02, {0.3 + age, 0.4}, ClickEvent::Button::left, false});
    }
    std::sort(log.clicks.begin(), log.clicks.end(), [](const auto& a, const auto& b) { return a.time < b.time; });
    return log;
}

const EventLog& sharedHourLog() {
    static const EventLog log = hourLog();
    return log;
}

Project cursorProject() {
    Project project = referenceProject(0);
    project.clips.push_back({Uuid::random(), Uuid::random(), 1800, hour, 1});
    project.cursor.smoothing = 0.6;
    return project;
}

double firstCursorFrameMilliseconds = 0;

void FrameWithCursorAndRipples(benchmark::State& state) {
    Project project = cursorProject();
    FrameInputs inputs = referenceInputs();
    FrameRenderer renderer;
    // Warm: the first frame smooths the log and draws the cursor picture once.
    auto started = std::chrono::steady_clock::now();
    QImage first = renderer.render(project, inputs, &sharedHourLog(), 1920, 1080);
    firstCursorFrameMilliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count();
    // For a person to look at: RECORDER_BENCH_FRAMES names a folder.
    if (const char* folder = std::getenv("RECORDER_BENCH_FRAMES")) first.save(QString(folder) + "/cursor-and-ripples.png");
    for (auto _ : state) benchmark::DoNotOptimize(renderer.render(project, inputs, &sharedHourLog(), 1920, 1080));
}

// The same cursor and ripples drawn alone onto a finished reference frame:
// the part of the difference above that the machine's noise can't hide.
void CursorLayerAlone(benchmark::State& state) {
    Project project = cursorProject();
    FramePlan plan = FramePlan::make(project, rampMiddle, {QSizeF(2880, 1800), QSizeF(1280, 720), false}, 1920, 1080);
    QImage frame = FrameRenderer().render(project, referenceInputs(), nullptr, 1920, 1080);
    SmoothedLogCache smoothed;
    CursorImages images;
    for (auto _ : state) {
        auto layer = CursorLayer::make(project, rampMiddle, plan.camera.screenFrame, sharedHourLog(), smoothed);
        if (layer) layer->draw(frame, plan.zoom, images);
        benchmark::DoNotOptimize(frame.constBits());
    }
}

// A Gaussian blur region on the recording, drawn through the mid-ramp zoom.
void FrameWithBlurRegion(benchmark::State& state) {
    Project project = referenceProject(0);
    MediaItem region;
    region.id = Uuid::random();
    region.kind = AssetKind::blur;
    region.start = 0;
    region.end = 4;
    region.frame = {0.35, 0.4, 0.3, 0.25};
    region.cornerRadius = 12;
    project.media.push_back(region);
    FrameInputs inputs = referenceInputs();
    FrameRenderer renderer;
    benchmark::DoNotOptimize(renderer.render(project, inputs, nullptr, 1920, 1080));
    for (auto _ : state) benchmark::DoNotOptimize(renderer.render(project, inputs, nullptr, 1920, 1080));
}

void FrameWithMotionBlur(benchmark::State& state) { renderFrames(state, 0.5, false); }
void FrameWithMotionBlurNewScreenFrame(benchmark::State& state) { renderFrames(state, 0.5, true); }

// Medians of repeated runs, by benchmark name.
class MedianReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs)
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
                milliseconds_[run.run_name.function_name] = run.GetAdjustedCPUTime() / 1e6 * perNano(run.time_unit);
        ConsoleReporter::ReportRuns(runs);
    }
    void printRatio(const std::string& measured, const std::string& baseline, const char* label) {
        double a = milliseconds_[measured], b = milliseconds_[baseline];
        if (b > 0) std::printf("%s: median CPU %.2f ms vs %.2f ms = %.2fx\n", label, a, b, a / b);
    }
    double milliseconds(const std::string& name) { return milliseconds_[name]; }
    void printAdded(const std::string& measured, const std::string& baseline, const char* label) {
        double a = milliseconds_[measured], b = milliseconds_[baseline];
        if (a > 0 && b > 0) std::printf("%s: median CPU %.2f ms vs %.2f ms = %+.2f ms per frame\n", label, a, b, a - b);
    }

private:
    static double perNano(benchmark::TimeUnit unit) {
        return unit == benchmark::kMillisecond ? 1e6 : unit == benchmark::kMicrosecond ? 1e3 : 1;
    }
    std::map<std::string, double> milliseconds_;
};

double psnr(const QImage& a, const QImage& b, int margin) {
    double sum = 0;
    long count = 0;
    for (int y = margin; y < a.height() - margin; ++y) {
        auto* p = reinterpret_cast<const QRgb*>(a.constScanLine(y));
        auto* q = reinterpret_cast<const QRgb*>(b.constScanLine(y));
        for (int x = margin; x < a.width() - margin; ++x) {
            for (int shift : {0, 8, 16}) {
                double d = double((p[x] >> shift) & 0xFF) - double((q[x] >> shift) & 0xFF);
                sum += d * d;
            }
            count += 3;
        }
    }
    double mse = sum / double(count);
    return mse > 0 ? 10 * std::log10(255.0 * 255.0 / mse) : 99;
}

// The source drawn at `scale` filling a canvas of its own shape, compared
// with Qt's area-averaging smooth scale of the same picture.
QImage screenAtScale(const QImage& source, double scale) {
    int w = int(std::lround(source.width() * scale)), h = int(std::lround(source.height() * scale));
    Project project("Quality", {w, h, 60}, "1.0");
    project.style.padding = 0;
    project.style.cornerRadius = 0;
    project.style.shadowOpacity = 0;
    FrameInputs inputs;
    inputs.screen = SourceImage(source);
    FrameRenderer renderer;
    return renderer.render(project, inputs, nullptr, w, h);
}

void printQuality(const char* name, const QImage& source, double scale) {
    QImage ours = screenAtScale(source, scale);
    QImage reference = source.scaled(ours.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                           .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    std::printf("PSNR %s at %.2fx against QImage::scaled (smooth): %.1f dB\n", name, scale, psnr(ours, reference, 2));
}

QImage stripes(bool vertical) {
    QImage image(2880, 1800, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) row[x] = ((vertical ? x : y) & 1) ? 0xFFFFFFFF : 0xFF000000;
    }
    return image;
}

// How far any pixel strays from the mean grey that 1-pixel stripes should
// become when shrunk: moiré shows as large, slow waves.
void printStripeRipple(double scale) {
    for (bool vertical : {true, false}) {
        QImage frame = screenAtScale(stripes(vertical), scale);
        double sum = 0, worst = 0;
        long count = 0;
        for (int y = 4; y < frame.height() - 4; ++y)
            for (int x = 4; x < frame.width() - 4; ++x, ++count) sum += qGreen(frame.pixel(x, y));
        double mean = sum / double(count);
        for (int y = 4; y < frame.height() - 4; ++y)
            for (int x = 4; x < frame.width() - 4; ++x) worst = std::max(worst, std::fabs(qGreen(frame.pixel(x, y)) - mean));
        std::printf("1-px %s stripes at %.2fx: mean grey %.1f, largest deviation %.1f levels\n",
                    vertical ? "vertical" : "horizontal", scale, mean, worst);
    }
}

} // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication app(argc, argv);
    using Function = void (*)(benchmark::State&);
    const std::pair<const char*, Function> benchmarks[] = {
        {"DrawImageBaseline", DrawImageBaseline},
        {"FrameWithoutMotionBlur", FrameWithoutMotionBlur},
        {"FrameWithMotionBlur", FrameWithMotionBlur},
        {"FrameWithMotionBlurNewScreenFrame", FrameWithMotionBlurNewScreenFrame},
        // Layers of the stage, each against FrameWithoutMotionBlur.
        {"FrameWithCursorAndRipples", FrameWithCursorAndRipples},
        {"CursorLayerAlone", CursorLayerAlone},
        {"FrameWithBlurRegion", FrameWithBlurRegion},
        // ---- Overlay items over the camera: a text item and an arrow shape
        // go here, each against FrameWithoutMotionBlur, with a printAdded line below.
    };
    for (auto [name, function] : benchmarks)
        benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)
            ->MeasureProcessCPUTime()
            ->Repetitions(7)
            ->ReportAggregatesOnly();
    benchmark::Initialize(&argc, argv);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio("FrameWithoutMotionBlur", "DrawImageBaseline", "frame without motion blur / drawImage");
    reporter.printRatio("FrameWithMotionBlur", "DrawImageBaseline", "frame with motion blur / drawImage");
    reporter.printRatio("FrameWithMotionBlurNewScreenFrame", "DrawImageBaseline",
                        "frame with motion blur and a new screen frame / drawImage");
    reporter.printAdded("FrameWithCursorAndRipples", "FrameWithoutMotionBlur",
                        "cursor smoothed over a one-hour log (432,000 samples) + three ripples, warm");
    if (reporter.milliseconds("CursorLayerAlone") > 0)
        std::printf("the cursor and ripples alone, drawn onto the reference frame: median CPU %.2f ms\n",
                    reporter.milliseconds("CursorLayerAlone"));
    if (firstCursorFrameMilliseconds > 0)
        std::printf("the first such frame, smoothing the log and drawing the cursor picture: %.2f ms (wall)\n",
                    firstCursorFrameMilliseconds);
    reporter.printAdded("FrameWithBlurRegion", "FrameWithoutMotionBlur", "one Gaussian blur region in the mid-ramp zoom");
    // ---- Overlay items: their printAdded lines go here.
    printQuality("small text", screenImage(), 0.55);
    printQuality("small text", screenImage(), 1.2);
    printStripeRipple(0.55);
    benchmark::Shutdown();
}
