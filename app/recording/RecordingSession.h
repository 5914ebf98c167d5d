#pragma once

#include "audio/MicCapturer.h"
#include "audio/PulseContext.h"
#include "camera/CameraCapturer.h"
#include "capture/CaptureSource.h"
#include "cursor/CursorTracker.h"
#include "look/LookLibrary.h"
#include "recording/RecordingProjectBuilder.h"
#include "recording/RecordingWindows.h"
#include "screen/ScreenCaptureBackend.h"
#include "screen/ScreenRecording.h"
#include "system/FocusMode.h"
#include "system/PermissionsManager.h"
#include "system/SystemActivity.h"

#include <QObject>
#include <QTimer>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace recorder {

class SerialQueue;

// One recording from the countdown to the saved project. One lives for the
// whole run; the panel, the hotkey, the menu and the agent tools all call
// the same operations. Everything here runs on the main thread (Qt's event
// loop); what waits (capturer start and stop, finishing the files, saving)
// runs on the queue "session.work" and hops back, so the loop never blocks.
class RecordingSession : public QObject {
public:
    struct State {
        enum class Kind { countdown, idle, preparing, recording, paused, finishing };
        Kind kind = Kind::idle;
        int seconds = 0; // still to show, countdown only

        static State countdown(int seconds) { return {Kind::countdown, seconds}; }
        static State of(Kind kind) { return {kind, 0}; }
        // As agents see it: "idle", "countdown", …
        std::string name() const;
        bool operator==(const State&) const = default;
    };

    struct Options {
        CaptureSource source = CaptureSource::display(0);
        std::optional<std::string> cameraID;
        std::optional<std::string> microphoneID;
        bool systemAudio = true;
        int fps = 60;
        int countdown = 3;
        bool focusModeDND = false;
        bool focusModeHideDesktop = false;
        bool operator==(const Options&) const = default;
    };

    // What changed, for observers.
    enum class Change { state, elapsed, droppedFrames, lastError, finishedProjectURL };
    using Observer = std::function<void(Change)>;

    struct Environment {
        // Null: the desktop this process runs in.
        std::shared_ptr<ScreenCaptureBackend> backend;
        // Null: no sound server, so no microphone and no system sound.
        std::shared_ptr<PulseContext> sound;
        // Empty: the "projectsDirectory" setting, read at each recording.
        std::filesystem::path recordingsFolder;
        // The style library's folder; empty: the application's support folder.
        std::filesystem::path supportFolder;
        // Null: no floating windows (headless).
        std::unique_ptr<RecordingWindows> windows;
        // Null: the real cameras.
        std::unique_ptr<CameraDeviceOpener> cameraOpener;
        std::string focusTool = "gsettings";
        std::filesystem::path deviceFolder = "/dev";
    };

    RecordingSession();
    explicit RecordingSession(Environment environment);
    ~RecordingSession() override;
    RecordingSession(const RecordingSession&) = delete;
    RecordingSession& operator=(const RecordingSession&) = delete;

    // From idle only.
    void start(const Options& options);
    void cancelCountdown();
    void togglePause();
    // From recording or paused; `done` runs on the main thread once the
    // project is saved or the stop failed (at once when there was nothing to
    // stop).
    void stop(std::function<void()> done = {});
    // Stops everything and deletes the package: no project, no onFailure.
    void discard(std::function<void()> done = {});
    // Discards and starts again with the same options, countdown included.
    void restart();

    const State& state() const { return state_; }
    double elapsed() const { return elapsed_; }
    int droppedFrames() const { return droppedFrames_; }
    const std::optional<std::string>& lastError() const { return lastError_; }
    const std::optional<std::filesystem::path>& finishedProjectURL() const { return finishedProjectURL_; }
    void clearFinishedProjectURL();
    const std::optional<Options>& options() const { return options_; }
    const std::optional<std::filesystem::path>& packageURL() const { return packageURL_; }
    bool holdsActivity() const { return activity_.isHolding(); }

    CameraCapturer& camera() { return *camera_; }
    MicCapturer& microphone() { return *microphone_; }
    CursorTracker& cursor() { return cursor_; }
    ScreenCaptureBackend& backend() { return *backend_; }

    int addObserver(Observer observer);
    void removeObserver(int token);
    // After each failure that ends a start or a save.
    std::function<void()> onFailure;

    static constexpr double tickSeconds = 0.25;
    static constexpr double shortestRecording = 0.2;

private:
    struct Stopped;

    void setState(State state);
    void setElapsed(double elapsed);
    void setDroppedFrames(int dropped);
    void setLastError(std::optional<std::string> message);
    void notify(Change change);
    bool isRecordingOrPaused() const;
    bool isDevice() const;

    bool permissionMissing(const Options& options);
    void runCountdown(int generation, int n);
    void beginCapture();
    void screenStarted(int generation, std::optional<std::string> error);
    void startDeviceWriters();
    void waitForFirstSample(int generation, int read);
    void deviceSentNothing();
    void beginRecording();
    void tick();
    void followRegion();
    std::optional<std::pair<Rect, Rect>> presentRegion();
    void streamEnded(bool device);

    void closeFloatingThings();
    void stopped(Stopped result);
    void saved(int generation, std::optional<std::string> error, double duration, int dropped);
    void fail(const std::string& message);
    void finishWaiters();
    void deletePackage();
    void hop(std::function<void()> work);

    std::shared_ptr<ScreenCaptureBackend> backend_;
    std::shared_ptr<PulseContext> sound_;
    std::filesystem::path recordingsFolder_;
    LookLibrary looks_;
    std::unique_ptr<RecordingWindows> windows_;
    PermissionsManager permissions_;
    FocusMode focus_;
    SystemActivity activity_;

    State state_;
    double elapsed_ = 0;
    int droppedFrames_ = 0;
    std::optional<std::string> lastError_;
    std::optional<std::filesystem::path> finishedProjectURL_;

    std::unique_ptr<CameraCapturer> camera_;
    std::unique_ptr<MicCapturer> microphone_;
    CursorTracker cursor_;
    std::unique_ptr<ScreenRecording> screen_;
    std::optional<Options> options_;
    std::optional<std::filesystem::path> packageURL_;
    QTimer ticker_;
    int ticks_ = 0;
    double startedAt_ = 0;
    double pausedTotal_ = 0;
    std::optional<double> pauseBegan_;
    // Bumped by a cancel, a discard or a failure: a hop of an earlier
    // attempt that comes back afterwards finds a different number and stops.
    int generation_ = 0;
    std::optional<int> countdownTask_;
    bool outlineShown_ = false;
    std::optional<std::pair<Rect, Rect>> followed_;
    // The stream ended before the recording had begun; told once it has.
    std::optional<bool> earlyStreamEnd_;
    std::vector<std::function<void()>> waiters_;
    std::vector<std::pair<int, Observer>> observers_;
    int nextObserver_ = 0;
    // Last: its thread ends before the state its tasks touch goes.
    std::unique_ptr<SerialQueue> work_;
};

} // namespace recorder
