#pragma once

#include "queue/SerialQueue.h"
#include "sink/MediaFormat.h"
#include "sink/MediaSample.h"
#include "sink/MediaWriter.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace recorder {

// The one way recorded samples reach a file. append() is called from capture
// callbacks and never blocks them: it stamps the host time and hands the
// sample to the sink's own queue. What the writer can't take at once waits in
// a short lane; what doesn't fit is counted and dropped. Pauses are cut out
// by shifting timestamps, and the file ends when the person stopped, even if
// the last picture came long before.
class AssetWriterSink {
public:
    struct Video {
        int width = 0;
        int height = 0;
        VideoCodec codec = VideoCodec::h264;
        int fps = 60;
        double bitrateMbps = 16;
        bool operator==(const Video&) const = default;
    };
    struct Audio {
        double sampleRate = 48000;
        int channels = 2;
        bool operator==(const Audio&) const = default;
    };
    using Kind = std::variant<Video, Audio>;

    struct Pending {
        MediaSample sample;
        std::int64_t arrived = 0;
        std::int64_t shift = 0;
    };
    struct Lane {
        std::deque<Pending> waiting;
        std::optional<std::int64_t> lastQueuedPTS;
    };

    static constexpr std::size_t laneCapacity = 8;

    // Throws CaptureError::writerFailed when the file can't be started.
    AssetWriterSink(const std::filesystem::path& url, FileType fileType, const std::vector<Kind>& kinds);
    ~AssetWriterSink();
    AssetWriterSink(const AssetWriterSink&) = delete;
    AssetWriterSink& operator=(const AssetWriterSink&) = delete;

    // Any thread; return at once. Times are host-clock nanoseconds.
    void append(const MediaSample& sample, bool isVideo);
    void pause(std::int64_t at);
    void resume(std::int64_t at);
    // Waits; the file's duration in seconds, never negative.
    double finish(std::optional<std::int64_t> until = std::nullopt);
    // Returns at once; the file stays behind, playable up to what was written.
    void cancel();
    // Told once, on the sink's queue, if the file stops being written (a full
    // disk), with the reason in words. Set before the first append.
    void setOnFailure(std::function<void(const std::string& reason)> onFailure);

    const std::filesystem::path& url() const { return url_; }
    std::optional<std::int64_t> firstPTS() const;
    int appended() const { return appended_; }
    int dropped() const { return dropped_; }
    const std::string& label() const { return queue_->label(); }

private:
    void take(Pending pending, bool isVideo);
    void drain(Lane& lane, MediaWriterInput* input, bool isVideo);
    void scheduleDrain();
    void scheduleStillCheck();
    void repeatStillPicture();
    void write(const Pending& pending, bool isVideo);
    bool writerUsable();
    void noteFailure(const std::string& reason);
    double finishOnQueue(std::optional<std::int64_t> until);
    double finishFailed();
    std::optional<std::int64_t> endTime(std::optional<std::int64_t> until) const;
    double secondsFromFirst(std::int64_t end) const;

    static constexpr std::int64_t unset = std::numeric_limits<std::int64_t>::min();

    std::filesystem::path url_;
    std::unique_ptr<MediaWriter> writer_;
    MediaWriterInput* videoInput_ = nullptr;
    MediaWriterInput* audioInput_ = nullptr;
    Lane videoLane_;
    Lane audioLane_;
    bool drainScheduled_ = false;
    bool sessionStarted_ = false;
    std::atomic<std::int64_t> firstPTS_{unset};
    std::optional<std::int64_t> lastVideoPTS_;
    std::optional<std::int64_t> lastAudioPTS_;
    std::optional<std::int64_t> lastVideoHost_;
    std::int64_t shiftAtLastVideo_ = 0;
    std::int64_t shift_ = 0;
    std::optional<std::int64_t> pauseStart_;
    std::atomic<int> appended_{0};
    std::atomic<int> dropped_{0};
    std::optional<std::string> failed_;
    bool stillCheckScheduled_ = false;
    std::optional<std::int64_t> lastRepeatHost_;
    std::function<void(const std::string&)> onFailure_;
    // Last, so that its thread stops before the state its tasks touch goes.
    std::unique_ptr<SerialQueue> queue_;
};

} // namespace recorder
