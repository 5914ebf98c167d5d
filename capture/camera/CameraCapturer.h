#pragma once

#include "audio/CapturedTrack.h"
#include "camera/CameraDevice.h"
#include "camera/FrameFanout.h"
#include "model/Size.h"
#include "queue/SerialQueue.h"
#include "sink/AssetWriterSink.h"
#include "sink/MediaSample.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace recorder {

// The person's camera, live for the whole run so the panel shows a picture
// before Record is pressed; a recording only attaches a sink. Frames are
// read on "camera.samples" while a device is selected.
class CameraCapturer {
public:
    // Null: the real devices (V4L2, and the test pattern).
    explicit CameraCapturer(std::unique_ptr<CameraDeviceOpener> opener = nullptr);
    ~CameraCapturer();
    CameraCapturer(const CameraCapturer&) = delete;
    CameraCapturer& operator=(const CameraCapturer&) = delete;

    // Main thread. The device already selected is left as it is; one that
    // can't be opened leaves no input, silently.
    void select(const std::optional<std::string>& deviceID);
    // Main thread; throws CaptureError when the file can't be started. The
    // camera is written at min(fps, 30), 8 Mbit/s.
    void startWriting(const std::filesystem::path& url, int fps);
    // Main thread; waits. None if nothing was being written.
    std::optional<CapturedTrack> stopWriting();
    // Main thread; the sink's pause and resume, when writing.
    void pauseWriting(std::int64_t at);
    void resumeWriting(std::int64_t at);
    // Main thread; returns at once, leaving what was written behind.
    void cancelWriting();

    bool hasInput() const;
    bool isRecording() const { return recording_; }
    Size pixelSize() const;
    std::optional<std::string> selectedID() const;
    // Warm-up frames left out of the present or last recording.
    int blackSkipped() const;
    // Previews read it; every frame goes to it, recording or not.
    FrameFanout& frames() { return frames_; }

    // Warm-up frames skipped before the first real picture, at most this.
    static constexpr int maxBlackSkipped = 15;
    static constexpr int maxCameraFPS = 30;
    static constexpr double cameraBitrateMbps = 8.0;
    static constexpr auto idleRetry = std::chrono::milliseconds(50);

    // 8 × 8 grid of pixels: black if none has a non-zero colour byte. Only
    // BGRA pictures can be black.
    static bool isBlack(const AVFrame& picture);

private:
    void pump(int generation);
    void take(const CameraFrame& frame);
    void stopInput();
    std::unique_ptr<AssetWriterSink> takeSink();

    std::unique_ptr<CameraDeviceOpener> opener_;
    FrameFanout frames_;
    // Touched only on the queue.
    std::unique_ptr<AssetWriterSink> sink_;
    std::unique_ptr<CameraDevice> input_;
    bool sawPicture_ = false;
    int blackSkipped_ = 0;
    // Set on the main thread, read by the queue.
    std::atomic<bool> recording_{false};
    std::atomic<int> generation_{0};
    mutable std::mutex stateLock_;
    std::optional<std::string> inputID_;
    Size pixelSize_;
    // Last, so its thread stops before the state its tasks touch goes.
    std::unique_ptr<SerialQueue> queue_;
};

} // namespace recorder
