#pragma once

#include "capture/CaptureSource.h"
#include "model/Size.h"
#include "queue/SerialQueue.h"
#include "screen/ScreenCaptureBackend.h"
#include "screen/ScreenRecording.h"
#include "screen/SystemAudioCapture.h"
#include "sink/AssetWriterSink.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>

namespace recorder {

// Records a display, a window or an area into "screen.mov", and the system's
// sound into "system.m4a" when asked. Only pictures that changed arrive; the
// sink holds the last one until the stop, so a still screen still makes a
// file as long as the recording.
class ScreenCapturer : public ScreenRecording {
public:
    using Result = ScreenCaptureResult;

    ScreenCapturer(CaptureSource source, int fps, bool captureSystemAudio, std::filesystem::path outputDir,
                   std::shared_ptr<ScreenCaptureBackend> backend = ScreenCaptureBackend::forThisSession());
    ~ScreenCapturer() override;
    ScreenCapturer(const ScreenCapturer&) = delete;
    ScreenCapturer& operator=(const ScreenCapturer&) = delete;

    // Before start: where system sound comes from.
    void setSystemAudioFactory(SystemAudioCapture::Factory factory);

    void setOnStreamStopped(StreamStoppedHandler handler) override;
    std::optional<double> firstSampleHostSeconds() const override;
    Rect captureRect() const override { return captureRect_; }
    Rect displayFrame() const override { return displayFrame_; }
    int droppedFrames() const override;
    void start() override;
    void pause(std::int64_t at) override;
    void resume(std::int64_t at) override;
    std::optional<Result> stop() override;
    void cancel() override;

    const CaptureSource& source() const { return source_; }
    Size pixelSize() const { return pixelSize_; }
    double scaleFactor() const { return scaleFactor_; }
    int frameCount() const { return frameCount_; }

    // Points times the scale, truncated and made even.
    static int evenPixels(double points, double scale);
    // Outward to whole points.
    static Rect integral(const Rect& rect);
    static double bitrateMbps(int width, int height, int fps);

private:
    struct Plan {
        StreamFilter filter;
        std::optional<Rect> sourceRect;
        std::string name;
    };

    Plan plan(const ShareableContent& content);
    Plan planDisplay(const ShareableContent& content, std::uint32_t id);
    Plan planArea(const ShareableContent& content, const CaptureSource::Area& area);
    Plan planWindow(const ShareableContent& content, std::uint32_t id);
    void makeVideoSink();
    void startSystemAudio();
    void stopCapture();
    void takeFrame(const MediaSample& frame);
    void streamStopped(const CaptureError& error);

    CaptureSource source_;
    int fps_;
    bool captureSystemAudio_;
    std::filesystem::path outputDir_;
    std::shared_ptr<ScreenCaptureBackend> backend_;
    SystemAudioCapture::Factory systemAudioFactory_;
    // Before what its tasks touch, so that it is gone last.
    std::unique_ptr<SerialQueue> sampleQueue_;
    std::unique_ptr<AssetWriterSink> videoSink_;
    std::unique_ptr<AssetWriterSink> audioSink_;
    std::unique_ptr<SystemAudioCapture> systemAudio_;
    std::unique_ptr<ScreenStream> stream_;
    Size pixelSize_;
    Rect captureRect_;
    Rect displayFrame_;
    double scaleFactor_ = 2.0;
    std::atomic<int> frameCount_{0};
    // No picture is dropped for a gap in the stream; kept for the sum.
    int gapDrops_ = 0;
    std::mutex handlerLock_;
    StreamStoppedHandler onStreamStopped_;
    std::atomic<bool> stopReported_{false};
};

} // namespace recorder
