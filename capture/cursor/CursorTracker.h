#pragma once

#include "cursor/InputMonitor.h"
#include "events/EventLog.h"
#include "model/Rect.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <thread>

namespace recorder {

// Writes the event log of a recording: the pointer's path 120 times a
// second (four times a second while it rests), clicks, wheel steps and keys.
// Positions are fractions of the recorded region, times source seconds from
// `zeroHostSeconds` with the pauses taken out.
//
// It samples and listens on its own thread ("cursor.events"), which owns the
// connection to the desktop; the log and the settings the session changes
// while it runs sit behind one small lock, never held across a wait.
class CursorTracker {
public:
    using MonitorFactory = std::function<std::unique_ptr<InputMonitor>()>;

    explicit CursorTracker(MonitorFactory makeMonitor = &InputMonitor::forThisSession);
    ~CursorTracker();
    CursorTracker(const CursorTracker&) = delete;
    CursorTracker& operator=(const CursorTracker&) = delete;

    // Starts a new, empty log. Without a desktop to watch, tracking goes on
    // and records nothing.
    void start(Rect captureRect, Rect displayFrame);
    // Waits for the thread to end; the log stays in place as well.
    EventLog stop();
    void pause();
    void resume();

    // Set by the session: the first before start, the region again when it
    // moves; events after a move use the new region.
    void setZeroHostSeconds(std::optional<double> seconds);
    void setCaptureRect(Rect captureRect);
    void setDisplayFrame(Rect displayFrame);

    EventLog log() const;
    bool isTracking() const;
    bool isPaused() const;
    double pauseShift() const;
    double samplesHz() const { return samplesHz_; }

    // A key as the key display shows it: modifiers in the order ⌃⌥⇧⌘, then
    // the key's name, or its characters, upper case with control or command.
    static std::string keyDisplay(const KeyModifiers& modifiers, const std::string& name, const std::string& characters);
    // A desktop location as a fraction of the region; none for an empty region.
    static std::optional<Point> position(Point location, Rect captureRect, Rect displayFrame);

private:
    void run();
    void sample();
    void recordClick(const InputMonitor::Click& click);
    void recordScroll(const InputMonitor::Scroll& scroll);
    void recordKey(const InputMonitor::Key& key);
    // Under the lock: the source time of an event handled now, if it counts.
    std::optional<double> eventTime() const;
    std::optional<Point> pointerPosition(Point location) const;
    // The time and region position of a click or wheel step happening now.
    std::optional<std::pair<double, Point>> pointerEvent();

    MonitorFactory makeMonitor_;
    std::unique_ptr<InputMonitor> monitor_;
    std::thread thread_;
    std::atomic<bool> running_{false};

    mutable std::mutex lock_;
    EventLog log_;
    double samplesHz_ = 120;
    double lastSampleTime_ = -1;
    Point lastPos_{-1, -1};
    double pauseShift_ = 0;
    std::optional<double> pauseStart_;
    bool paused_ = false;
    Rect captureRect_;
    Rect displayFrame_;
    std::optional<double> zeroHostSeconds_;
    bool isTracking_ = false;
};

} // namespace recorder
