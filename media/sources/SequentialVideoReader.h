#pragma once

#include "decode/VideoDecoder.h"
#include "frames/FrameImage.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace recorder {

// Reads a long recording strictly forwards, for playback and export, where
// time only grows. It never goes back: an earlier time gets the frame in
// force; the owner makes a new reader after a seek.
//
// With read-ahead, a thread "playback decode" keeps at most 4 frames
// decoded ahead of the clock, so the thread that draws never decodes.
class SequentialVideoReader {
public:
    struct Options {
        // Source seconds of the first frame wanted.
        double startTime = 0;
        bool readsAhead = false;
        // Hide runs of up to 15 black frames, the warm-up of a capture.
        bool skipsBlackFrames = false;
    };

    // Throws MediaError when the file can't be opened.
    SequentialVideoReader(const std::filesystem::path& file, Options options);
    ~SequentialVideoReader();
    SequentialVideoReader(const SequentialVideoReader&) = delete;
    SequentialVideoReader& operator=(const SequentialVideoReader&) = delete;

    // The latest frame with a time at or before `at`; none before the first.
    std::optional<FrameImage> frame(double at);

    // Read-ahead only: start the decode thread; stop it (also on destruction).
    void start();
    void stop();
    // Read-ahead only: true once a first frame is ready or the file has ended.
    bool waitUntilReady(std::chrono::milliseconds timeout);

private:
    struct TimedFrame {
        double time = 0;
        FrameImage image;
    };

    std::optional<TimedFrame> pull();
    std::optional<DecodedFrame> nextFromStart();
    std::optional<FrameImage> frameReadingInPlace(double at);
    std::optional<FrameImage> frameFromAhead(double at);
    void decodeAhead();

    std::unique_ptr<VideoDecoder> reader_;
    std::optional<TimedFrame> pending_;
    std::optional<FrameImage> last_;
    bool finished_ = false;
    bool skipsBlackFrames_ = false;
    int blackRun_ = 0;
    bool readsAhead_ = false;
    std::deque<TimedFrame> ahead_;
    bool stopped_ = false;
    bool inUse_ = false;
    std::mutex aheadLock_;
    std::condition_variable aheadChanged_;

    double startTime_ = 0;
    // The frame in force at the start time, held while looking past it.
    std::optional<DecodedFrame> beforeStart_;
    bool reachedStart_ = false;
    std::thread decodeThread_;
};

} // namespace recorder
