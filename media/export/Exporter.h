#pragma once

#include "export/ExportFrameDrawer.h"
#include "export/ExportSettings.h"
#include "export/PictureWriter.h"
#include "model/Project.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>

namespace recorder {

class FrameHandoff;

// Renders a project to one MP4 or GIF file: frames at exact multiples of
// 1/fps, composed by the drawer on the calling thread while a thread
// "export.encode" encodes the frame before, sound mixed alongside.
class Exporter {
public:
    // Told i/frames every fifth frame and 1 at the end, on the export thread.
    using ProgressHandler = std::function<void(double progress)>;

    // The watchdog: this long without the encoder taking a frame is a stall.
    static constexpr std::chrono::milliseconds stallLimit{15000};

    // `package` holds the project's sound files.
    Exporter(Project project, std::filesystem::path package, ExportSettings settings,
             std::unique_ptr<ExportFrameDrawer> drawer);
    ~Exporter();
    Exporter(const Exporter&) = delete;
    Exporter& operator=(const Exporter&) = delete;

    // Does the export; returns when the file is complete. Throws ExportError
    // (empty, writer, cancelled, stalled) or a sentence naming the file when
    // it can't be written. Whatever was half written stays for the caller.
    // Runs once.
    void run();
    // Safe from any thread and from a signal handler: the loop sees it
    // before the next frame or within 5 ms of a wait.
    void cancel() { cancelled_.store(true); }
    double progress() const { return progress_.load(); }
    void setProgressHandler(ProgressHandler handler) { onProgress_ = std::move(handler); }

private:
    struct Encoding;

    std::unique_ptr<PictureWriter> openWriter(std::int64_t frames);
    void composeFrames(std::int64_t frames, FrameHandoff& handoff);
    void checkWhileWaiting(std::chrono::milliseconds waited) const;
    void report(double value);

    Project project_;
    std::filesystem::path package_;
    ExportSettings settings_;
    std::unique_ptr<ExportFrameDrawer> drawer_;
    std::atomic<bool> cancelled_{false};
    std::atomic<double> progress_{0};
    ProgressHandler onProgress_;
    static_assert(std::atomic<bool>::is_always_lock_free);
};

} // namespace recorder
