#include "recording/RecordingSession.h"

#include "AppPaths.h"
#include "Settings.h"
#include "audio/SystemAudioCapturer.h"
#include "brand/Brand.h"
#include "clock/HostClock.h"
#include "json/JsonText.h"
#include "log/Log.h"
#include "package/PackageError.h"
#include "package/ProjectPackage.h"
#include "queue/SerialQueue.h"
#include "recording/DesktopPicture.h"
#include "recording/HeadlessRecordingWindows.h"
#include "screen/ScreenCapturer.h"

#include <QDateTime>
#include <QLocale>

namespace recorder {

namespace {

using Kind = RecordingSession::State::Kind;

// The sentence of a file error, without the path and the function's name.
std::string describe(const std::exception& error) {
    if (auto* file = dynamic_cast<const std::filesystem::filesystem_error*>(&error)) return file->code().message();
    if (auto* package = dynamic_cast<const PackageError*>(&error)) return package->code().message();
    return error.what();
}

std::string describe(const Rect& r) {
    return "(" + JsonText::formatDouble(r.x) + ", " + JsonText::formatDouble(r.y) + ", " +
           JsonText::formatDouble(r.width) + ", " + JsonText::formatDouble(r.height) + ")";
}

Rect offset(const Rect& region, const Rect& display) {
    return {region.x + display.x, region.y + display.y, region.width, region.height};
}

double intersectionArea(const Rect& a, const Rect& b) {
    double w = std::min(a.maxX(), b.maxX()) - std::max(a.x, b.x);
    double h = std::min(a.maxY(), b.maxY()) - std::max(a.y, b.y);
    return w > 0 && h > 0 ? w * h : 0;
}

// Two recordings within one second would share a name: the second gets a
// number rather than writing into the first.
std::filesystem::path newPackage(const std::filesystem::path& folder) {
    QString date = QLocale::c().toString(QDateTime::currentDateTime(), "yyyy-MM-dd 'at' HH.mm.ss");
    std::string stem = "Recording " + date.toStdString();
    std::string extension = "." + Brand::shared().documentExtension;
    std::filesystem::path package = folder / (stem + extension);
    std::error_code error;
    for (int n = 2; std::filesystem::exists(package, error); ++n)
        package = folder / (stem + " " + std::to_string(n) + extension);
    return package;
}

} // namespace

struct RecordingSession::Stopped {
    int generation = 0;
    RecordingProjectBuilder::Results results;
    std::optional<ScreenCaptureResult> screen;
};

std::string RecordingSession::State::name() const {
    switch (kind) {
    case Kind::countdown: return "countdown";
    case Kind::idle: return "idle";
    case Kind::preparing: return "preparing";
    case Kind::recording: return "recording";
    case Kind::paused: return "paused";
    case Kind::finishing: return "finishing";
    }
    return "idle";
}

RecordingSession::RecordingSession() : RecordingSession(Environment()) {}

RecordingSession::RecordingSession(Environment environment)
    : backend_(environment.backend ? std::move(environment.backend) : ScreenCaptureBackend::forThisSession()),
      sound_(std::move(environment.sound)), recordingsFolder_(std::move(environment.recordingsFolder)),
      looks_(environment.supportFolder.empty() ? AppPaths::supportFolder() : environment.supportFolder),
      windows_(environment.windows ? std::move(environment.windows) : std::make_unique<HeadlessRecordingWindows>()),
      permissions_(environment.deviceFolder), focus_(environment.focusTool),
      camera_(std::make_unique<CameraCapturer>(std::move(environment.cameraOpener))),
      microphone_(std::make_unique<MicCapturer>(sound_)), work_(std::make_unique<SerialQueue>("session.work")) {
    ticker_.setInterval(int(tickSeconds * 1000));
    connect(&ticker_, &QTimer::timeout, this, [this] { tick(); });
}

RecordingSession::~RecordingSession() {
    ticker_.stop();
    // What the queue still holds runs now; its hops back die with this object.
    work_.reset();
    if (screen_) screen_->cancel();
    focus_.restore();
    activity_.end();
}

// MARK: observing

int RecordingSession::addObserver(Observer observer) {
    observers_.emplace_back(++nextObserver_, std::move(observer));
    return nextObserver_;
}

void RecordingSession::removeObserver(int token) {
    std::erase_if(observers_, [token](const auto& entry) { return entry.first == token; });
}

void RecordingSession::notify(Change change) {
    auto observers = observers_;
    for (const auto& [token, observer] : observers) observer(change);
}

void RecordingSession::setState(State state) {
    if (state == state_) return;
    state_ = state;
    if (state.kind != Kind::idle && !activity_.isHolding()) activity_.begin("Recording");
    if (state.kind == Kind::idle) activity_.end();
    notify(Change::state);
}

void RecordingSession::setElapsed(double elapsed) {
    if (elapsed == elapsed_) return;
    elapsed_ = elapsed;
    notify(Change::elapsed);
}

void RecordingSession::setDroppedFrames(int dropped) {
    if (dropped == droppedFrames_) return;
    droppedFrames_ = dropped;
    notify(Change::droppedFrames);
}

void RecordingSession::setLastError(std::optional<std::string> message) {
    if (message == lastError_) return;
    lastError_ = std::move(message);
    notify(Change::lastError);
}

void RecordingSession::clearFinishedProjectURL() {
    if (!finishedProjectURL_) return;
    finishedProjectURL_.reset();
    notify(Change::finishedProjectURL);
}

bool RecordingSession::isRecordingOrPaused() const {
    return state_.kind == Kind::recording || state_.kind == Kind::paused;
}

bool RecordingSession::isDevice() const {
    return options_ && std::holds_alternative<CaptureSource::Device>(options_->source.value);
}

void RecordingSession::hop(std::function<void()> work) {
    QMetaObject::invokeMethod(this, std::move(work), Qt::QueuedConnection);
}

// MARK: start

void RecordingSession::start(const Options& options) {
    if (state_.kind != Kind::idle) return;
    if (permissionMissing(options)) return;
    options_ = options;
    setLastError(std::nullopt);
    setDroppedFrames(0);
    setElapsed(0);
    pausedTotal_ = 0;
    pauseBegan_.reset();
    earlyStreamEnd_.reset();
    int generation = ++generation_;
    if (options.countdown < 1) {
        setState(State::of(Kind::preparing));
        QTimer::singleShot(0, this, [this, generation] {
            if (generation == generation_) beginCapture();
        });
        return;
    }
    setState(State::countdown(options.countdown));
    countdownTask_ = generation;
    runCountdown(generation, options.countdown);
}

bool RecordingSession::permissionMissing(const Options& options) {
    permissions_.refresh();
    bool device = std::holds_alternative<CaptureSource::Device>(options.source.value);
    Permission needed = device ? Permission::camera : Permission::screenRecording;
    PermissionState state = permissions_.state(needed);
    // On Wayland the desktop's own dialog is the screen permission, shown as
    // capture starts: only a screen that can't be reached at all stops here.
    bool granted = device ? state == PermissionState::granted : state != PermissionState::denied;
    if (granted) return false;
    std::string message = device ? "Recording a phone or tablet needs the Camera permission (that is how this "
                                   "computer receives its screen)."
                                 : "Screen Recording permission is required.";
    std::string remedy = permissions_.remedy(needed);
    if (!remedy.empty()) message += " " + remedy;
    setLastError(message);
    if (onFailure) onFailure();
    return true;
}

void RecordingSession::runCountdown(int generation, int n) {
    QTimer::singleShot(1000, this, [this, generation, n] {
        if (countdownTask_ != generation) return;
        if (n >= 2) {
            setState(State::countdown(n - 1));
            runCountdown(generation, n - 1);
            return;
        }
        countdownTask_.reset();
        setState(State::of(Kind::preparing));
        beginCapture();
    });
}

void RecordingSession::cancelCountdown() {
    countdownTask_.reset();
    if (state_.kind == Kind::countdown) setState(State::of(Kind::idle));
}

void RecordingSession::beginCapture() {
    if (!options_) return;
    std::filesystem::path folder = recordingsFolder_.empty() ? Settings().projectsDirectory() : recordingsFolder_;
    std::filesystem::path package = newPackage(folder);
    try {
        ProjectPackage::createAssetsFolder(package);
    } catch (const std::exception& error) {
        fail("Could not create the project folder: " + describe(error));
        return;
    }
    packageURL_ = package;
    // Without a sound server there is no system sound to ask for: the
    // connection already said so once.
    bool systemAudio = options_->systemAudio && sound_;
    auto capturer = std::make_unique<ScreenCapturer>(options_->source, options_->fps, systemAudio,
                                                     ProjectPackage::assetsURL(package), backend_);
    capturer->setSystemAudioFactory([sound = sound_] { return SystemAudioCapturer::make(sound); });
    bool device = isDevice();
    capturer->setOnStreamStopped([this, device](const CaptureError&) { hop([this, device] { streamEnded(device); }); });
    screen_ = std::move(capturer);
    // Before capture starts, so that the change isn't recorded.
    focus_.enable(options_->focusModeDND, options_->focusModeHideDesktop);
    int generation = generation_;
    work_->async([this, screen = screen_.get(), generation] {
        std::optional<std::string> error;
        try {
            screen->start();
        } catch (const std::exception& failure) {
            error = failure.what();
        }
        hop([this, generation, error] { screenStarted(generation, error); });
    });
}

void RecordingSession::screenStarted(int generation, std::optional<std::string> error) {
    if (generation != generation_) return;
    if (error) {
        focus_.restore();
        screen_.reset();
        deletePackage();
        fail("Could not start screen capture: " + *error);
        return;
    }
    startDeviceWriters();
    waitForFirstSample(generation, 0);
}

void RecordingSession::startDeviceWriters() {
    std::filesystem::path assets = ProjectPackage::assetsURL(*packageURL_);
    if (options_->cameraID && camera_->hasInput()) {
        try {
            camera_->startWriting(assets / "camera.mov", options_->fps);
        } catch (const std::exception& error) {
            Log::info("capture", std::string("camera writer: ") + error.what());
        }
    }
    if (options_->microphoneID && microphone_->hasInput()) {
        try {
            microphone_->startWriting(assets / "mic.m4a");
        } catch (const std::exception& error) {
            Log::info("capture", std::string("mic writer: ") + error.what());
        }
    }
}

// Every 20 ms on the main thread: about 2 s for a screen, 8 s for a phone.
void RecordingSession::waitForFirstSample(int generation, int read) {
    if (generation != generation_ || !screen_) return;
    int limit = isDevice() ? 400 : 100;
    if (!screen_->firstSampleHostSeconds() && read < limit && !earlyStreamEnd_) {
        QTimer::singleShot(20, this, [this, generation, read] { waitForFirstSample(generation, read + 1); });
        return;
    }
    if (isDevice() && !screen_->firstSampleHostSeconds()) {
        deviceSentNothing();
        return;
    }
    beginRecording();
}

void RecordingSession::deviceSentNothing() {
    focus_.restore();
    int generation = generation_;
    std::string name = options_->source.displayName();
    work_->async([this, screen = screen_.get(), generation, name] {
        screen->cancel();
        camera_->cancelWriting();
        microphone_->cancelWriting();
        hop([this, generation, name] {
            if (generation != generation_) return;
            screen_.reset();
            deletePackage();
            fail(name + " didn't send its screen. Unlock it and keep it awake, tap Trust if it asks, and quit any "
                        "other app showing its screen. Then press Record again.");
        });
    });
}

void RecordingSession::beginRecording() {
    auto first = screen_->firstSampleHostSeconds();
    cursor_.setZeroHostSeconds(first.value_or(HostClock::seconds()));
    if (!isDevice()) cursor_.start(screen_->captureRect(), screen_->displayFrame());
    // gsettings is another process: its wait stays off the main thread.
    work_->async([assets = ProjectPackage::assetsURL(*packageURL_)] { DesktopPicture::copyInto(assets); });
    const auto& source = options_->source.value;
    if (std::holds_alternative<CaptureSource::Window>(source) || std::holds_alternative<CaptureSource::Area>(source)) {
        windows_->showOutline(offset(screen_->captureRect(), screen_->displayFrame()));
        outlineShown_ = true;
    }
    startedAt_ = HostClock::seconds();
    setState(State::of(Kind::recording));
    windows_->showHUD();
    if (options_->cameraID) windows_->showCameraPreview(camera_->frames());
    ticks_ = 0;
    ticker_.start();
    followRegion();
    Log::info("capture", "recording into " + packageURL_->filename().string());
    if (earlyStreamEnd_) {
        bool device = *earlyStreamEnd_;
        earlyStreamEnd_.reset();
        streamEnded(device);
    }
}

// MARK: while recording

void RecordingSession::tick() {
    if (state_.kind != Kind::recording) return;
    setElapsed(HostClock::seconds() - startedAt_ - pausedTotal_);
    setDroppedFrames(screen_ ? screen_->droppedFrames() : 0);
    // The desktop tells no one when a window moves: look once a second.
    if (++ticks_ % 4 == 0) followRegion();
}

void RecordingSession::togglePause() {
    std::int64_t t = HostClock::nanoseconds();
    if (state_.kind == Kind::recording) {
        setState(State::of(Kind::paused));
        pauseBegan_ = HostClock::seconds();
        if (screen_) screen_->pause(t);
        camera_->pauseWriting(t);
        microphone_->pauseWriting(t);
        cursor_.pause();
    } else if (state_.kind == Kind::paused) {
        setState(State::of(Kind::recording));
        if (pauseBegan_) pausedTotal_ += HostClock::seconds() - *pauseBegan_;
        pauseBegan_.reset();
        if (screen_) screen_->resume(t);
        camera_->resumeWriting(t);
        microphone_->resumeWriting(t);
        cursor_.resume();
    }
}

void RecordingSession::followRegion() {
    if (!isRecordingOrPaused() || !options_) return;
    auto present = presentRegion();
    if (!present || (followed_ && *followed_ == *present)) return;
    bool first = !followed_;
    followed_ = present;
    if (first) return;
    const auto& [region, display] = *present;
    cursor_.setCaptureRect(region);
    cursor_.setDisplayFrame(display);
    if (outlineShown_) windows_->moveOutline(offset(region, display));
    windows_->placeHUD();
    Log::info("capture", "recorded region moved: " + describe(region) + " on " + describe(display));
}

std::optional<std::pair<Rect, Rect>> RecordingSession::presentRegion() {
    try {
        const auto& source = options_->source.value;
        if (std::holds_alternative<CaptureSource::Device>(source)) return std::nullopt;
        ShareableContent content = backend_->shareableContent();
        if (auto* display = std::get_if<CaptureSource::Display>(&source)) {
            auto* found = content.display(display->id);
            if (!found || found->frame.width <= 0 || found->frame.height <= 0) return std::nullopt;
            return std::pair{Rect{0, 0, found->frame.width, found->frame.height}, found->frame};
        }
        if (auto* area = std::get_if<CaptureSource::Area>(&source)) {
            auto* found = content.display(area->displayID);
            if (!found || found->frame.width <= 0 || found->frame.height <= 0) return std::nullopt;
            return std::pair{ScreenCapturer::integral(area->rect), found->frame};
        }
        auto window = backend_->window(std::get<CaptureSource::Window>(source).id);
        if (!window) return std::nullopt;
        const ShareableContent::Display* best = nullptr;
        double bestArea = -1;
        for (const auto& display : content.displays) {
            double area = intersectionArea(display.frame, window->frame);
            if (area > bestArea) best = &display, bestArea = area;
        }
        if (!best) return std::nullopt;
        Rect region{window->frame.x - best->frame.x, window->frame.y - best->frame.y, window->frame.width,
                    window->frame.height};
        return std::pair{region, best->frame};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void RecordingSession::streamEnded(bool device) {
    if (state_.kind == Kind::preparing && screen_) {
        earlyStreamEnd_ = device;
        return;
    }
    if (!isRecordingOrPaused()) return;
    setLastError(device ? "The phone or tablet was disconnected; the recording was saved up to that point."
                        : "The display or window went away; the recording was saved up to that point.");
    stop();
}

// MARK: stop

void RecordingSession::closeFloatingThings() {
    followed_.reset();
    if (outlineShown_) windows_->closeOutline();
    outlineShown_ = false;
    windows_->closeHUD();
    windows_->closePreviews();
}

void RecordingSession::stop(std::function<void()> done) {
    if (state_.kind == Kind::finishing) {
        if (done) waiters_.push_back(std::move(done));
        return;
    }
    if (!isRecordingOrPaused() || !packageURL_ || !options_) {
        if (done) done();
        return;
    }
    if (done) waiters_.push_back(std::move(done));
    if (state_.kind == Kind::paused) togglePause();
    setState(State::of(Kind::finishing));
    ticker_.stop();
    closeFloatingThings();
    focus_.restore();
    Stopped stopped;
    stopped.generation = generation_;
    stopped.results.package = *packageURL_;
    stopped.results.fps = options_->fps;
    stopped.results.events = cursor_.stop();
    stopped.results.cameraPixelSize = camera_->pixelSize();
    work_->async([this, screen = screen_.get(), stopped = std::move(stopped)]() mutable {
        stopped.screen = screen ? screen->stop() : std::nullopt;
        stopped.results.camera = camera_->stopWriting();
        stopped.results.microphone = microphone_->stopWriting();
        hop([this, stopped = std::move(stopped)]() mutable { this->stopped(std::move(stopped)); });
    });
}

void RecordingSession::stopped(Stopped result) {
    if (result.generation != generation_) return;
    screen_.reset();
    if (!result.screen || result.screen->duration <= shortestRecording) {
        std::string message = lastError_.value_or("The recording was too short to save.");
        deletePackage();
        fail(message);
        finishWaiters();
        return;
    }
    result.results.screen = *result.screen;
    work_->async([this, generation = result.generation, results = std::move(result.results)] {
        std::optional<std::string> error;
        try {
            ProjectPackage::save(RecordingProjectBuilder::build(results, &looks_), results.package);
        } catch (const std::exception& failure) {
            error = "Could not save the project: " + describe(failure);
        }
        hop([this, generation, error, duration = results.screen.duration, dropped = results.screen.droppedFrames] {
            saved(generation, error, duration, dropped);
        });
    });
}

void RecordingSession::saved(int generation, std::optional<std::string> error, double duration, int dropped) {
    if (generation != generation_) return;
    if (error) {
        // The package stays, deliberately: nothing recorded is lost.
        fail(*error);
    } else {
        setDroppedFrames(dropped);
        std::filesystem::path package = *packageURL_;
        Log::info("capture", "saved " + package.filename().string() + ": " + JsonText::formatDouble(duration) +
                                 "s, dropped " + std::to_string(dropped));
        setState(State::of(Kind::idle));
        packageURL_.reset();
        finishedProjectURL_ = package;
        notify(Change::finishedProjectURL);
    }
    finishWaiters();
}

void RecordingSession::fail(const std::string& message) {
    Log::info("capture", message);
    setLastError(message);
    setState(State::of(Kind::idle));
    packageURL_.reset();
    if (onFailure) onFailure();
}

void RecordingSession::finishWaiters() {
    auto waiters = std::move(waiters_);
    waiters_.clear();
    for (auto& done : waiters) done();
}

void RecordingSession::deletePackage() {
    if (!packageURL_) return;
    std::error_code ignored;
    std::filesystem::remove_all(*packageURL_, ignored);
}

// MARK: discard and restart

void RecordingSession::discard(std::function<void()> done) {
    if (state_.kind == Kind::idle && !screen_ && !packageURL_) {
        if (done) done();
        return;
    }
    int generation = ++generation_;
    countdownTask_.reset();
    ticker_.stop();
    closeFloatingThings();
    focus_.restore();
    if (cursor_.isTracking()) cursor_.stop();
    work_->async([this, screen = screen_.get(), generation, done = std::move(done)] {
        if (screen) screen->cancel();
        if (camera_->isRecording()) camera_->cancelWriting();
        microphone_->cancelWriting();
        hop([this, generation, done] {
            if (generation != generation_) return;
            screen_.reset();
            deletePackage();
            packageURL_.reset();
            setState(State::of(Kind::idle));
            finishWaiters();
            if (done) done();
        });
    });
}

void RecordingSession::restart() {
    if (!isRecordingOrPaused() || !options_) return;
    discard([this, options = *options_] { start(options); });
}

} // namespace recorder
