#pragma once

#include "audio/CapturedTrack.h"
#include "audio/PulseContext.h"
#include "audio/PulseRecordStream.h"
#include "queue/SerialQueue.h"
#include "sink/AssetWriterSink.h"
#include "sink/MediaSample.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace recorder {

// The person's microphone, live for the whole run so the panel's meter moves
// before Record is pressed; a recording only attaches a sink. Capture runs
// while a device is selected, whether or not anything is written.
class MicCapturer {
public:
    using SampleHandler = std::function<void(const MediaSample& sample)>;

    // Without a sound server (null) there is never a microphone.
    explicit MicCapturer(std::shared_ptr<PulseContext> session);
    ~MicCapturer();
    MicCapturer(const MicCapturer&) = delete;
    MicCapturer& operator=(const MicCapturer&) = delete;

    // Main thread. A source name, or none. The device already selected is
    // left as it is; one that can't be opened leaves no input, silently.
    void select(const std::optional<std::string>& deviceID);
    // Main thread; throws CaptureError when the file can't be started.
    void startWriting(const std::filesystem::path& url);
    // Main thread; waits. None if nothing was being written.
    std::optional<CapturedTrack> stopWriting();
    // Main thread; return at once. Host-clock nanoseconds, the same instant
    // for every track of the recording, so the pause is cut alike from all.
    void pauseWriting(std::int64_t at);
    void resumeWriting(std::int64_t at);
    // Main thread; waits. Drops the file being written, if any.
    void cancelWriting();

    // Any thread, the meter reads it 20 or more times a second.
    float level() const;
    bool hasInput() const { return input_ != nullptr; }
    std::optional<std::string> selectedID() const;
    bool isRecording() const { return recording_; }
    double sampleRate() const { return sampleRate_; }
    int channels() const { return channels_; }
    // Every captured sample, on "mic.samples", recording or not. Set it
    // before selecting a device.
    void setOnSample(SampleHandler onSample);

private:
    void take(const float* interleaved, int frames, int channels, std::int64_t hostTime);
    void deliver(const MediaSample& sample);
    void updateLevel(const MediaSample& sample);
    void collectForSink(const MediaSample& sample);
    void flushToSink();

    std::shared_ptr<PulseContext> session_;
    std::unique_ptr<SerialQueue> queue_;
    std::unique_ptr<PulseRecordStream> input_;
    std::unique_ptr<AssetWriterSink> sink_;
    std::atomic<bool> recording_{false};
    double sampleRate_ = 48000;
    int channels_ = 1;
    mutable std::mutex levelLock_;
    float level_ = 0;
    SampleHandler onSample_;
    // The sink's lane holds a few samples, sized for pictures; sound goes to
    // it in runs of this length so a writer's hiccup doesn't drop any.
    static constexpr int framesPerWrite = 4800;
    std::vector<float> unwritten_;
    std::int64_t unwrittenStart_ = 0;
    int unwrittenChannels_ = 1;
    // On "mic.samples": sound of a pause, and sound captured before the
    // resume but delivered after it, is kept out of the file.
    bool writingPaused_ = false;
    std::int64_t resumedAt_ = 0;
};

} // namespace recorder
