#include "cursor/CursorTracker.h"

#include "clock/HostClock.h"
#include "log/Log.h"

#include <pthread.h>

namespace recorder {

namespace {

// A resting pointer is still sampled this often, so the log shows it resting.
constexpr double restInterval = 0.25;

// Upper case of the letters that have one in the scripts a keyboard types
// directly: ASCII, Latin-1, Greek and Cyrillic.
std::u32string upper(std::u32string text) {
    for (char32_t& c : text) {
        if ((c >= U'a' && c <= U'z') || (c >= 0xe0 && c <= 0xfe && c != 0xf7) || (c >= 0x3b1 && c <= 0x3c9 && c != 0x3c2) ||
            (c >= 0x430 && c <= 0x44f))
            c -= 0x20;
        else if (c >= 0x450 && c <= 0x45f)
            c -= 0x50;
    }
    return text;
}

std::u32string decode(const std::string& utf8) {
    std::u32string out;
    for (std::size_t i = 0; i < utf8.size();) {
        auto byte = static_cast<unsigned char>(utf8[i]);
        int length = byte < 0x80 ? 1 : byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
        char32_t c = length == 1 ? byte : length == 2 ? byte & 0x1f : length == 3 ? byte & 0x0f : byte & 0x07;
        for (int k = 1; k < length && i + std::size_t(k) < utf8.size(); ++k)
            c = (c << 6) | (static_cast<unsigned char>(utf8[i + std::size_t(k)]) & 0x3f);
        out += c;
        i += std::size_t(length);
    }
    return out;
}

std::string encode(const std::u32string& text) {
    std::string out;
    for (char32_t c : text) {
        if (c < 0x80) {
            out += char(c);
        } else if (c < 0x800) {
            out += char(0xc0 | (c >> 6));
            out += char(0x80 | (c & 0x3f));
        } else if (c < 0x10000) {
            out += char(0xe0 | (c >> 12));
            out += char(0x80 | ((c >> 6) & 0x3f));
            out += char(0x80 | (c & 0x3f));
        } else {
            out += char(0xf0 | (c >> 18));
            out += char(0x80 | ((c >> 12) & 0x3f));
            out += char(0x80 | ((c >> 6) & 0x3f));
            out += char(0x80 | (c & 0x3f));
        }
    }
    return out;
}

} // namespace

CursorTracker::CursorTracker(MonitorFactory makeMonitor) : makeMonitor_(std::move(makeMonitor)) {}

CursorTracker::~CursorTracker() { stop(); }

std::string CursorTracker::keyDisplay(const KeyModifiers& modifiers, const std::string& name,
                                      const std::string& characters) {
    std::string text;
    if (modifiers.control) text += "⌃";
    if (modifiers.option) text += "⌥";
    if (modifiers.shift) text += "⇧";
    if (modifiers.command) text += "⌘";
    if (!name.empty()) return text + name;
    return text + (modifiers.control || modifiers.command ? encode(upper(decode(characters))) : characters);
}

std::optional<Point> CursorTracker::position(Point location, Rect captureRect, Rect displayFrame) {
    if (captureRect.width == 0 || captureRect.height == 0) return std::nullopt;
    return Point{(location.x - displayFrame.x - captureRect.x) / captureRect.width,
                 (location.y - displayFrame.y - captureRect.y) / captureRect.height};
}

void CursorTracker::start(Rect captureRect, Rect displayFrame) {
    stop();
    {
        std::lock_guard guard(lock_);
        captureRect_ = captureRect;
        displayFrame_ = displayFrame;
        log_ = EventLog{};
        isTracking_ = true;
    }
    try {
        monitor_ = makeMonitor_();
    } catch (const std::exception& error) {
        Log::error("capture", std::string("cursor tracking: ") + error.what());
        return;
    }
    running_ = true;
    thread_ = std::thread([this] { run(); });
    pthread_setname_np(thread_.native_handle(), "cursor.events");
}

EventLog CursorTracker::stop() {
    if (thread_.joinable()) {
        running_ = false;
        monitor_->wake();
        thread_.join();
    }
    monitor_.reset();
    std::lock_guard guard(lock_);
    isTracking_ = false;
    return log_;
}

void CursorTracker::pause() {
    std::lock_guard guard(lock_);
    if (paused_) return;
    paused_ = true;
    pauseStart_ = HostClock::seconds();
}

void CursorTracker::resume() {
    std::lock_guard guard(lock_);
    if (!paused_) return;
    paused_ = false;
    if (pauseStart_) pauseShift_ += HostClock::seconds() - *pauseStart_;
    pauseStart_.reset();
}

void CursorTracker::setZeroHostSeconds(std::optional<double> seconds) {
    std::lock_guard guard(lock_);
    zeroHostSeconds_ = seconds;
}

void CursorTracker::setCaptureRect(Rect captureRect) {
    std::lock_guard guard(lock_);
    captureRect_ = captureRect;
}

void CursorTracker::setDisplayFrame(Rect displayFrame) {
    std::lock_guard guard(lock_);
    displayFrame_ = displayFrame;
}

EventLog CursorTracker::log() const {
    std::lock_guard guard(lock_);
    return log_;
}

bool CursorTracker::isTracking() const {
    std::lock_guard guard(lock_);
    return isTracking_;
}

bool CursorTracker::isPaused() const {
    std::lock_guard guard(lock_);
    return paused_;
}

double CursorTracker::pauseShift() const {
    std::lock_guard guard(lock_);
    return pauseShift_;
}

void CursorTracker::run() {
    InputMonitor::Handlers handlers{[this](const InputMonitor::Click& c) { recordClick(c); },
                                    [this](const InputMonitor::Scroll& s) { recordScroll(s); },
                                    [this](const InputMonitor::Key& k) { recordKey(k); }};
    auto period = std::chrono::nanoseconds(std::int64_t(1e9 / samplesHz_));
    auto nextTick = std::chrono::steady_clock::now();
    while (running_) {
        auto now = std::chrono::steady_clock::now();
        if (now >= nextTick) {
            sample();
            while (nextTick <= now) nextTick += period;
        }
        monitor_->waitForEvents(nextTick - std::chrono::steady_clock::now(), handlers);
    }
}

std::optional<double> CursorTracker::eventTime() const {
    if (paused_ || !zeroHostSeconds_) return std::nullopt;
    double t = HostClock::seconds() - *zeroHostSeconds_ - pauseShift_;
    return t < 0 ? std::nullopt : std::optional(t);
}

std::optional<Point> CursorTracker::pointerPosition(Point location) const {
    return position(location, captureRect_, displayFrame_);
}

void CursorTracker::sample() {
    std::optional<Point> location = monitor_->pointerLocation();
    std::lock_guard guard(lock_);
    auto t = eventTime();
    if (!t || !location) return;
    if (*location == lastPos_ && *t - lastSampleTime_ < restInterval) return;
    lastPos_ = *location;
    lastSampleTime_ = *t;
    if (auto p = pointerPosition(*location)) log_.samples.push_back({*t, *p});
}

std::optional<std::pair<double, Point>> CursorTracker::pointerEvent() {
    std::optional<double> t;
    {
        std::lock_guard guard(lock_);
        t = eventTime();
    }
    if (!t) return std::nullopt;
    // Raw events carry no position: the pointer is read as the event is handled.
    std::optional<Point> location = monitor_->pointerLocation();
    if (!location) return std::nullopt;
    std::lock_guard guard(lock_);
    auto p = pointerPosition(*location);
    if (!p) return std::nullopt;
    return std::pair{*t, *p};
}

void CursorTracker::recordClick(const InputMonitor::Click& click) {
    auto event = pointerEvent();
    if (!event) return;
    std::lock_guard guard(lock_);
    log_.clicks.push_back({event->first, event->second, click.button, click.isDown});
}

void CursorTracker::recordScroll(const InputMonitor::Scroll& scroll) {
    auto event = pointerEvent();
    if (!event) return;
    std::lock_guard guard(lock_);
    log_.scrolls.push_back({event->first, event->second, scroll.deltaX, scroll.deltaY});
}

void CursorTracker::recordKey(const InputMonitor::Key& key) {
    std::lock_guard guard(lock_);
    auto t = eventTime();
    // What is typed while another client holds the keyboard (a password
    // prompt) is never recorded.
    if (!t || monitor_->isSecureInputActive()) return;
    if (key.isDown && key.isRepeat) return;
    log_.keys.push_back({*t, keyDisplay(key.modifiers, key.name, key.characters), key.isDown});
}

} // namespace recorder
