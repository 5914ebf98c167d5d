#include "sources/SequentialVideoReader.h"

#include "frames/BlackFrame.h"

#include <pthread.h>

namespace recorder {

namespace {

constexpr std::size_t aheadLimit = 4;
// A frame counts at its own time however the two times were rounded, so an
// export at exact multiples of the frame period never shows a frame late.
constexpr double timeSlack = 1e-6;
constexpr int longestHiddenBlackRun = 15;

} // namespace

SequentialVideoReader::SequentialVideoReader(const std::filesystem::path& file, Options options)
    : reader_(std::make_unique<VideoDecoder>(file)), skipsBlackFrames_(options.skipsBlackFrames),
      readsAhead_(options.readsAhead), startTime_(std::max(options.startTime, 0.0)) {
    if (startTime_ > 0) reader_->seek(startTime_);
}

SequentialVideoReader::~SequentialVideoReader() {
    stop();
    if (decodeThread_.joinable()) decodeThread_.join();
}

std::optional<FrameImage> SequentialVideoReader::frame(double at) {
    return readsAhead_ ? frameFromAhead(at) : frameReadingInPlace(at);
}

std::optional<FrameImage> SequentialVideoReader::frameReadingInPlace(double at) {
    if (pending_) {
        if (pending_->time > at + timeSlack) return last_;
        last_ = std::move(pending_->image);
        pending_.reset();
    }
    while (!finished_) {
        auto next = pull();
        if (!next) {
            finished_ = true;
            break;
        }
        if (next->time > at + timeSlack) {
            pending_ = std::move(next);
            break;
        }
        last_ = std::move(next->image);
    }
    return last_;
}

std::optional<FrameImage> SequentialVideoReader::frameFromAhead(double at) {
    std::lock_guard lock(aheadLock_);
    bool dropped = false;
    while (!ahead_.empty() && ahead_.front().time <= at + timeSlack) {
        last_ = std::move(ahead_.front().image);
        ahead_.pop_front();
        dropped = true;
    }
    if (dropped) aheadChanged_.notify_all();
    if (last_ || ahead_.empty()) return last_;
    return ahead_.front().image;
}

// Frames before the start time are decoded but not converted; the one in
// force at the start comes first.
std::optional<DecodedFrame> SequentialVideoReader::nextFromStart() {
    while (!reachedStart_) {
        auto decoded = reader_->next();
        if (!decoded || decoded->time > startTime_) {
            reachedStart_ = true;
            if (!beforeStart_) return decoded;
            std::optional<DecodedFrame> first = std::move(beforeStart_);
            beforeStart_ = std::move(decoded);
            return first;
        }
        beforeStart_ = std::move(decoded);
    }
    if (beforeStart_) {
        std::optional<DecodedFrame> held = std::move(beforeStart_);
        beforeStart_.reset();
        return held;
    }
    return reader_->next();
}

std::optional<SequentialVideoReader::TimedFrame> SequentialVideoReader::pull() {
    for (;;) {
        auto decoded = nextFromStart();
        if (!decoded) return std::nullopt;
        FrameImage image = reader_->image(*decoded);
        if (image.isNull()) continue;
        if (skipsBlackFrames_ && BlackFrame::bufferIsBlack(image) && blackRun_ < longestHiddenBlackRun) {
            ++blackRun_;
            continue;
        }
        blackRun_ = 0;
        return TimedFrame{decoded->time, std::move(image)};
    }
}

void SequentialVideoReader::start() {
    if (!readsAhead_ || decodeThread_.joinable()) return;
    {
        std::lock_guard lock(aheadLock_);
        if (pending_) ahead_.push_front(std::move(*pending_));
        pending_.reset();
    }
    decodeThread_ = std::thread([this] {
        pthread_setname_np(pthread_self(), "playback decode");
        decodeAhead();
    });
}

void SequentialVideoReader::decodeAhead() {
    for (;;) {
        std::unique_lock lock(aheadLock_);
        aheadChanged_.wait(lock, [this] { return stopped_ || ahead_.size() < aheadLimit; });
        if (stopped_ || finished_ || !reader_) return;
        inUse_ = true;
        lock.unlock();

        auto next = pull();

        lock.lock();
        inUse_ = false;
        if (!stopped_) {
            if (next) ahead_.push_back(std::move(*next));
            else finished_ = true;
            aheadChanged_.notify_all();
            continue;
        }
        // stop() came while decoding and left the reader to us.
        std::unique_ptr<VideoDecoder> cancelled = std::move(reader_);
        lock.unlock();
        return;
    }
}

void SequentialVideoReader::stop() {
    std::unique_ptr<VideoDecoder> cancelled;
    {
        std::lock_guard lock(aheadLock_);
        stopped_ = true;
        aheadChanged_.notify_all();
        if (!inUse_ && readsAhead_) cancelled = std::move(reader_);
    }
}

bool SequentialVideoReader::waitUntilReady(std::chrono::milliseconds timeout) {
    std::unique_lock lock(aheadLock_);
    return aheadChanged_.wait_for(lock, timeout, [this] { return !ahead_.empty() || last_ || finished_ || stopped_; });
}

} // namespace recorder
