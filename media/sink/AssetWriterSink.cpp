#include "sink/AssetWriterSink.h"

#include "clock/HostClock.h"
#include "log/Log.h"
#include "model/Uuid.h"
#include "sink/CaptureError.h"

#include <unistd.h>

namespace recorder {

namespace {

constexpr auto drainRetry = std::chrono::milliseconds(4);
constexpr std::int64_t drainBudget = HostClock::nanosecondsPerSecond;
constexpr auto stillInterval = std::chrono::seconds(1);
constexpr auto stillCheckInterval = std::chrono::milliseconds(250);

MediaWriterInput::Settings writerSettings(const AssetWriterSink::Kind& kind) {
    if (auto* video = std::get_if<AssetWriterSink::Video>(&kind)) {
        return VideoEncoder::Settings{video->width,
                                      video->height,
                                      video->codec,
                                      video->fps,
                                      std::int64_t(video->bitrateMbps * 1e6),
                                      video->fps * 2,
                                      false};
    }
    const auto& audio = std::get<AssetWriterSink::Audio>(kind);
    return AudioEncoder::Settings{int(audio.sampleRate), audio.channels, audio.channels < 2 ? 128000 : 192000};
}

} // namespace

AssetWriterSink::AssetWriterSink(const std::filesystem::path& url, FileType fileType, const std::vector<Kind>& kinds)
    : url_(url) {
    std::string suffix = Uuid::random().string().substr(0, 6);
    std::error_code ignored;
    std::filesystem::remove(url, ignored);
    writer_ = std::make_unique<MediaWriter>(url, fileType, "write." + suffix);
    for (const auto& kind : kinds) {
        MediaWriterInput& input = writer_->addInput(writerSettings(kind));
        (std::holds_alternative<Video>(kind) ? videoInput_ : audioInput_) = &input;
    }
    if (!writer_->startWriting()) {
        std::string error = writer_->error();
        throw CaptureError::writerFailed(error.empty() ? "startWriting" : error);
    }
    queue_ = std::make_unique<SerialQueue>("sink." + suffix);
}

AssetWriterSink::~AssetWriterSink() = default;

void AssetWriterSink::setOnFailure(std::function<void(const std::string&)> onFailure) {
    queue_->sync([&] { onFailure_ = std::move(onFailure); });
}

std::optional<std::int64_t> AssetWriterSink::firstPTS() const {
    std::int64_t value = firstPTS_;
    return value == unset ? std::nullopt : std::optional(value);
}

void AssetWriterSink::append(const MediaSample& sample, bool isVideo) {
    std::int64_t arrived = HostClock::nanoseconds();
    queue_->async([this, sample, arrived, isVideo] { take({sample, arrived, 0}, isVideo); });
}

void AssetWriterSink::take(Pending pending, bool isVideo) {
    MediaWriterInput* input = isVideo ? videoInput_ : audioInput_;
    Lane& lane = isVideo ? videoLane_ : audioLane_;
    if (!writerUsable() || !input || pauseStart_) return;
    auto pts = pending.sample.presentationTime();
    if (!pts) return;
    if (!sessionStarted_) {
        firstPTS_ = *pts;
        writer_->startSession(*pts);
        sessionStarted_ = true;
    }
    if (shift_ != 0) pending.sample = pending.sample.withPresentationTime(*pts - shift_);
    std::int64_t t = *pending.sample.presentationTime();
    // A file never runs backwards, and nothing lies before its zero.
    if (lane.lastQueuedPTS && t <= *lane.lastQueuedPTS) return;
    if (t < firstPTS_) return;
    drain(lane, input, isVideo);
    pending.shift = shift_;
    if (lane.waiting.empty() && input->isReadyForMoreMediaData()) {
        write(pending, isVideo);
    } else if (lane.waiting.size() >= laneCapacity) {
        // lastQueuedPTS stays: a later sample is compared with one that was kept.
        ++dropped_;
        return;
    } else {
        lane.waiting.push_back(std::move(pending));
        scheduleDrain();
    }
    lane.lastQueuedPTS = t;
}

void AssetWriterSink::write(const Pending& pending, bool isVideo) {
    if (!writerUsable()) return;
    MediaWriterInput* input = isVideo ? videoInput_ : audioInput_;
    if (!input->append(pending.sample)) {
        noteFailure(writer_->error());
        return;
    }
    ++appended_;
    if (isVideo) {
        lastVideoPTS_ = pending.sample.presentationTime();
        lastVideoHost_ = pending.arrived;
        shiftAtLastVideo_ = pending.shift;
        scheduleStillCheck();
    } else {
        lastAudioPTS_ = pending.sample.presentationTime();
    }
}

// The writer encodes on its own thread, so a failure (a full disk) shows up
// here first, as its status.
bool AssetWriterSink::writerUsable() {
    if (failed_) return false;
    if (writer_->status() == MediaWriter::Status::failed) noteFailure(writer_->error());
    return !failed_ && writer_->status() == MediaWriter::Status::writing;
}

void AssetWriterSink::noteFailure(const std::string& reason) {
    if (failed_) return;
    failed_ = reason.empty() ? "the writer stopped" : reason;
    Log::error("capture", "append failed for " + url_.filename().string() + ": " + *failed_);
    if (onFailure_) onFailure_(*failed_);
}

void AssetWriterSink::drain(Lane& lane, MediaWriterInput* input, bool isVideo) {
    if (!input) return;
    if (!writerUsable()) {
        lane.waiting.clear();
        return;
    }
    while (!lane.waiting.empty() && input->isReadyForMoreMediaData()) {
        Pending next = std::move(lane.waiting.front());
        lane.waiting.pop_front();
        write(next, isVideo);
    }
}

void AssetWriterSink::scheduleDrain() {
    if (drainScheduled_) return;
    drainScheduled_ = true;
    queue_->asyncAfter(drainRetry, [this] {
        drainScheduled_ = false;
        drain(videoLane_, videoInput_, true);
        drain(audioLane_, audioInput_, false);
        if (!videoLane_.waiting.empty() || !audioLane_.waiting.empty()) scheduleDrain();
    });
}

// A still screen sends no pictures, and what was last shown would wait in
// the writer until the next one: a crash in a long still stretch would lose
// it. So a picture that has stood for a second is written again, at the time
// it has reached in the file (pauses left out, as for the held end). Repeats
// aren't samples: they count nowhere and move no timestamps of the lanes.
void AssetWriterSink::scheduleStillCheck() {
    if (stillCheckScheduled_) return;
    stillCheckScheduled_ = true;
    queue_->asyncAfter(stillCheckInterval, [this] {
        stillCheckScheduled_ = false;
        repeatStillPicture();
        if (writerUsable()) scheduleStillCheck();
    });
}

void AssetWriterSink::repeatStillPicture() {
    if (!writerUsable() || pauseStart_ || !lastVideoPTS_ || !videoLane_.waiting.empty()) return;
    std::int64_t now = HostClock::nanoseconds();
    std::int64_t latest = std::max(*lastVideoHost_, lastRepeatHost_.value_or(0));
    if (now - latest < std::chrono::nanoseconds(stillInterval).count()) return;
    std::int64_t shown = (now - *lastVideoHost_) - (shift_ - shiftAtLastVideo_);
    videoInput_->repeatLastPicture(*lastVideoPTS_ + shown);
    lastRepeatHost_ = now;
}

void AssetWriterSink::pause(std::int64_t at) {
    queue_->async([this, at] {
        if (!pauseStart_) pauseStart_ = at;
    });
}

void AssetWriterSink::resume(std::int64_t at) {
    queue_->async([this, at] {
        if (!pauseStart_) return;
        shift_ += at - *pauseStart_;
        pauseStart_.reset();
    });
}

double AssetWriterSink::finish(std::optional<std::int64_t> until) {
    return queue_->syncResult([&] { return finishOnQueue(until); });
}

double AssetWriterSink::finishOnQueue(std::optional<std::int64_t> until) {
    if (!writerUsable()) return finishFailed();
    std::int64_t began = HostClock::nanoseconds();
    while ((!videoLane_.waiting.empty() || !audioLane_.waiting.empty()) &&
           HostClock::nanoseconds() - began < drainBudget) {
        drain(videoLane_, videoInput_, true);
        drain(audioLane_, audioInput_, false);
        if (!videoLane_.waiting.empty() || !audioLane_.waiting.empty()) usleep(2000);
    }
    if (videoInput_) videoInput_->markAsFinished();
    if (audioInput_) audioInput_->markAsFinished();
    auto end = endTime(until);
    double duration = 0;
    if (end) {
        writer_->endSession(*end);
        duration = secondsFromFirst(*end);
    }
    writer_->finishWriting();
    if (writer_->status() != MediaWriter::Status::completed)
        Log::error("capture", "finishWriting " + url_.filename().string() + ": " + writer_->error());
    return std::max(duration, 0.0);
}

// A writer that failed mid-way (a full disk) left a file that plays up to its
// last complete fragment: report that much, so the recording is kept.
double AssetWriterSink::finishFailed() {
    if (writer_->status() != MediaWriter::Status::failed) return 0;
    writer_->finishWriting();
    auto end = endTime(std::nullopt);
    return end ? std::max(secondsFromFirst(*end), 0.0) : 0;
}

std::optional<std::int64_t> AssetWriterSink::endTime(std::optional<std::int64_t> until) const {
    std::optional<std::int64_t> end = lastVideoPTS_;
    if (lastAudioPTS_ && (!end || *lastAudioPTS_ > *end)) end = lastAudioPTS_;
    if (until && lastVideoPTS_ && lastVideoHost_) {
        // The time from the last picture to the stop, less the pauses in it:
        // a still screen sends nothing, yet the file lasts until the stop.
        std::int64_t gap = (*until - *lastVideoHost_) - (shift_ - shiftAtLastVideo_);
        if (gap > 0) {
            std::int64_t held = *lastVideoPTS_ + gap;
            if (!end || held > *end) end = held;
        }
    }
    return end;
}

double AssetWriterSink::secondsFromFirst(std::int64_t end) const {
    auto first = firstPTS();
    return first ? HostClock::toSeconds(end - *first) : 0;
}

void AssetWriterSink::cancel() {
    queue_->async([this] {
        videoLane_.waiting.clear();
        audioLane_.waiting.clear();
        if (writer_->status() == MediaWriter::Status::writing) writer_->cancelWriting();
    });
}

} // namespace recorder
