#include "screen/ScreenCapturer.h"

#include "clock/HostClock.h"
#include "json/JsonText.h"
#include "log/Log.h"

#include <cmath>

namespace recorder {

namespace {

constexpr double fullHDPixels = 1920.0 * 1080.0;

bool intersects(const Rect& a, const Rect& b) {
    return a.x < b.maxX() && b.x < a.maxX() && a.y < b.maxY() && b.y < a.maxY();
}

Rect scaled(const Rect& r, double scale) { return {r.x * scale, r.y * scale, r.width * scale, r.height * scale}; }

} // namespace

ScreenCapturer::ScreenCapturer(CaptureSource source, int fps, bool captureSystemAudio, std::filesystem::path outputDir,
                               std::shared_ptr<ScreenCaptureBackend> backend)
    : source_(std::move(source)), fps_(fps), captureSystemAudio_(captureSystemAudio), outputDir_(std::move(outputDir)),
      backend_(std::move(backend)), sampleQueue_(std::make_unique<SerialQueue>("screen.samples")) {}

ScreenCapturer::~ScreenCapturer() { stopCapture(); }

int ScreenCapturer::evenPixels(double points, double scale) { return int(points * scale) & ~1; }

Rect ScreenCapturer::integral(const Rect& r) {
    double x = std::floor(r.x), y = std::floor(r.y);
    return {x, y, std::ceil(r.maxX()) - x, std::ceil(r.maxY()) - y};
}

double ScreenCapturer::bitrateMbps(int width, int height, int fps) {
    return double(width) * double(height) / fullHDPixels * (fps >= 60 ? 16 : 10);
}

void ScreenCapturer::setSystemAudioFactory(SystemAudioCapture::Factory factory) {
    systemAudioFactory_ = std::move(factory);
}

void ScreenCapturer::setOnStreamStopped(StreamStoppedHandler handler) {
    std::lock_guard lock(handlerLock_);
    onStreamStopped_ = std::move(handler);
}

std::optional<double> ScreenCapturer::firstSampleHostSeconds() const {
    auto first = videoSink_ ? videoSink_->firstPTS() : std::nullopt;
    return first ? std::optional(HostClock::toSeconds(*first)) : std::nullopt;
}

int ScreenCapturer::droppedFrames() const { return (videoSink_ ? videoSink_->dropped() : 0) + gapDrops_; }

ScreenCapturer::Plan ScreenCapturer::plan(const ShareableContent& content) {
    if (auto* display = std::get_if<CaptureSource::Display>(&source_.value)) return planDisplay(content, display->id);
    if (auto* area = std::get_if<CaptureSource::Area>(&source_.value)) return planArea(content, *area);
    if (auto* window = std::get_if<CaptureSource::Window>(&source_.value)) return planWindow(content, window->id);
    throw CaptureError::noContent();
}

ScreenCapturer::Plan ScreenCapturer::planDisplay(const ShareableContent& content, std::uint32_t id) {
    const ShareableContent::Display* display = content.display(id);
    if (!display && !content.displays.empty()) {
        display = &content.displays.front();
        Log::info("capture", "display " + std::to_string(id) + " not listed, recording " + std::to_string(display->id) +
                                 " instead");
    }
    if (!display) throw CaptureError::noContent();
    scaleFactor_ = backend_->scaleFactor(display->id);
    pixelSize_ = {display->width * scaleFactor_, display->height * scaleFactor_};
    displayFrame_ = display->frame;
    captureRect_ = {0, 0, double(display->width), double(display->height)};
    return {StreamFilter{StreamFilter::Display{display->id}}, std::nullopt, display->name};
}

ScreenCapturer::Plan ScreenCapturer::planArea(const ShareableContent& content, const CaptureSource::Area& area) {
    const ShareableContent::Display* display = content.display(area.displayID);
    if (!display) throw CaptureError::noContent();
    scaleFactor_ = backend_->scaleFactor(display->id);
    Rect rect = integral(area.rect);
    pixelSize_ = {rect.width * scaleFactor_, rect.height * scaleFactor_};
    displayFrame_ = display->frame;
    captureRect_ = rect;
    return {StreamFilter{StreamFilter::Display{display->id}}, scaled(rect, scaleFactor_), source_.displayName()};
}

ScreenCapturer::Plan ScreenCapturer::planWindow(const ShareableContent& content, std::uint32_t id) {
    auto window = backend_->window(id);
    if (!window) throw CaptureError::noContent();
    const ShareableContent::Display* screen = nullptr;
    for (const auto& display : content.displays) {
        if (intersects(display.frame, window->frame)) {
            screen = &display;
            break;
        }
    }
    if (!screen && !content.displays.empty()) screen = &content.displays.front();
    scaleFactor_ = screen ? backend_->scaleFactor(screen->id) : 2.0;
    pixelSize_ = {window->frame.width * scaleFactor_, window->frame.height * scaleFactor_};
    displayFrame_ = screen ? screen->frame : Rect{};
    captureRect_ = {window->frame.x - displayFrame_.x, window->frame.y - displayFrame_.y, window->frame.width,
                    window->frame.height};
    return {StreamFilter{StreamFilter::Window{id}}, std::nullopt, source_.displayName()};
}

void ScreenCapturer::start() {
    ShareableContent content = backend_->shareableContent();
    Plan planned = plan(content);
    StreamConfiguration configuration;
    configuration.width = evenPixels(pixelSize_.width, 1);
    configuration.height = evenPixels(pixelSize_.height, 1);
    configuration.sourceRect = planned.sourceRect;
    configuration.fps = fps_;
    pixelSize_ = {double(configuration.width), double(configuration.height)};
    makeVideoSink();
    if (captureSystemAudio_) startSystemAudio();
    stream_ = backend_->makeStream(planned.filter, configuration, *sampleQueue_);
    try {
        stream_->start([this](const MediaSample& frame) { takeFrame(frame); },
                       [this](const CaptureError& error) { streamStopped(error); });
    } catch (...) {
        stream_.reset();
        cancel();
        throw;
    }
    std::string name = std::holds_alternative<CaptureSource::Display>(source_.value) ? planned.name
                                                                                     : source_.displayName(content.displays);
    Log::info("capture", "screen capture started " + std::to_string(configuration.width) + "x" +
                             std::to_string(configuration.height) + "@" + std::to_string(fps_) + " source=" + name);
}

void ScreenCapturer::makeVideoSink() {
    int width = int(pixelSize_.width), height = int(pixelSize_.height);
    AssetWriterSink::Video kind{width, height, VideoCodec::h264, fps_, bitrateMbps(width, height, fps_)};
    videoSink_ = std::make_unique<AssetWriterSink>(outputDir_ / "screen.mov", FileType::quickTimeMovie,
                                                   std::vector<AssetWriterSink::Kind>{kind});
    // A file that can't be written any more (a full disk) ends the capture
    // the way a closed window does: what was written stays playable.
    videoSink_->setOnFailure([this](const std::string& reason) {
        streamStopped(CaptureError::streamFailed("screen.mov could not be written (" + reason + ")."));
    });
}

void ScreenCapturer::startSystemAudio() {
    systemAudio_ = systemAudioFactory_ ? systemAudioFactory_() : nullptr;
    if (!systemAudio_) {
        Log::info("capture", "system audio is not available here; recording without it");
        return;
    }
    audioSink_ = std::make_unique<AssetWriterSink>(outputDir_ / "system.m4a", FileType::m4a,
                                                   std::vector<AssetWriterSink::Kind>{AssetWriterSink::Audio{48000, 2}});
    systemAudio_->start([this](const MediaSample& sample) {
        sampleQueue_->async([this, sample] { audioSink_->append(sample, false); });
    });
}

void ScreenCapturer::takeFrame(const MediaSample& frame) {
    videoSink_->append(frame, true);
    ++frameCount_;
}

void ScreenCapturer::streamStopped(const CaptureError& error) {
    if (stopReported_.exchange(true)) return;
    Log::info("capture", std::string("stream stopped: ") + error.what());
    StreamStoppedHandler handler;
    {
        std::lock_guard lock(handlerLock_);
        handler = onStreamStopped_;
    }
    if (handler) handler(error);
}

void ScreenCapturer::pause(std::int64_t at) {
    if (videoSink_) videoSink_->pause(at);
    if (audioSink_) audioSink_->pause(at);
}

void ScreenCapturer::resume(std::int64_t at) {
    if (videoSink_) videoSink_->resume(at);
    if (audioSink_) audioSink_->resume(at);
}

// After this, nothing more is on its way to the sinks.
void ScreenCapturer::stopCapture() {
    if (stream_) stream_->stop();
    stream_.reset();
    if (systemAudio_) systemAudio_->stop();
    systemAudio_.reset();
    sampleQueue_->sync([] {});
}

std::optional<ScreenCapturer::Result> ScreenCapturer::stop() {
    std::int64_t stoppedAt = HostClock::nanoseconds();
    stopCapture();
    if (!videoSink_) return std::nullopt;
    double duration = videoSink_->finish(stoppedAt);
    if (audioSink_) audioSink_->finish();
    int dropped = videoSink_->dropped() + gapDrops_;
    Log::info("capture", "screen capture stopped: " + JsonText::formatDouble(duration) + "s, " +
                             std::to_string(videoSink_->appended()) + " frames, dropped " + std::to_string(dropped));
    Result result;
    result.videoURL = videoSink_->url();
    if (audioSink_) result.systemAudioURL = audioSink_->url();
    result.duration = duration;
    result.pixelSize = pixelSize_;
    result.captureRect = captureRect_;
    result.displayFrame = displayFrame_;
    result.scaleFactor = scaleFactor_;
    result.firstSampleHostSeconds = firstSampleHostSeconds();
    result.droppedFrames = dropped;
    if (auto first = audioSink_ ? audioSink_->firstPTS() : std::nullopt)
        result.systemAudioFirstSampleHostSeconds = HostClock::toSeconds(*first);
    return result;
}

void ScreenCapturer::cancel() {
    stopCapture();
    if (videoSink_) videoSink_->cancel();
    if (audioSink_) audioSink_->cancel();
}

} // namespace recorder
