#pragma once

#include "queue/SerialQueue.h"
#include "sink/FileOutput.h"
#include "sink/MediaFormat.h"
#include "sink/MediaWriterInput.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

struct AVFormatContext;

namespace recorder {

// Encodes and muxes the tracks of one file on its own thread.
//
// The file is a fragmented QuickTime/MP4 file: after the header, every
// second of media (and every key frame) is written as a self-contained
// fragment with its own index, so a file cut short by a crash, a kill or a
// power cut plays up to its last complete fragment. FileOutput starts
// write-back of each second as it goes; at most a second or two is lost.
// The encoder holds no pictures back, and a screen that stands still has its
// last picture repeated once a second (AssetWriterSink), which pushes the
// picture before it out in a fragment of its own: what was last shown is on
// disk within about a second too.
class MediaWriter {
public:
    enum class Status { unknown, writing, completed, failed, cancelled };

    // Creates the file; throws CaptureError::writerFailed.
    MediaWriter(const std::filesystem::path& url, FileType fileType, const std::string& label);
    ~MediaWriter();
    MediaWriter(const MediaWriter&) = delete;
    MediaWriter& operator=(const MediaWriter&) = delete;

    // Before startWriting.
    MediaWriterInput& addInput(const MediaWriterInput::Settings& settings);
    // Opens the encoders and writes the header; false with error() set if not.
    bool startWriting();
    // Host times: the file's zero, and where its last picture ends.
    void startSession(std::int64_t sourceTime);
    void endSession(std::int64_t sourceTime);
    // Waits until the file is complete or has failed.
    void finishWriting();
    // Waits; the file stays, playable up to what was written.
    void cancelWriting();

    Status status() const { return status_; }
    std::string error() const;
    const std::filesystem::path& url() const { return url_; }

private:
    friend class MediaWriterInput;

    // On the writer's thread.
    void run(std::function<void()> task);
    void writePacket(AVPacket* packet);
    void flushFragment();
    void fail(const std::string& error);
    void closeFile();

    std::filesystem::path url_;
    std::unique_ptr<FileOutput> output_;
    AVFormatContext* format_ = nullptr;
    std::vector<std::unique_ptr<MediaWriterInput>> inputs_;
    std::atomic<Status> status_{Status::unknown};
    mutable std::mutex errorLock_;
    std::string error_;
    std::optional<std::int64_t> sessionStart_;
    std::optional<std::int64_t> sessionEnd_;
    // Last, so that it stops before what its tasks touch goes away.
    std::unique_ptr<SerialQueue> queue_;
};

} // namespace recorder
