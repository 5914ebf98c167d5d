#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

struct AVIOContext;

namespace recorder {

// The byte stream a recording's muxer writes into: a plain file descriptor
// under an AVIOContext. Owning the descriptor lets us start write-back of what
// has been written about once a second without waiting for it, so a power cut
// loses seconds rather than the minutes the page cache may hold, and it turns
// a full disk into one clear error instead of a muxer's generic one.
class FileOutput {
public:
    // Creates or truncates the file; throws CaptureError::writerFailed.
    explicit FileOutput(const std::filesystem::path& path);
    ~FileOutput();
    FileOutput(const FileOutput&) = delete;
    FileOutput& operator=(const FileOutput&) = delete;

    AVIOContext* context() const { return context_; }
    // The first write error, in words ("No space left on device"); empty if none.
    const std::string& error() const { return error_; }
    // Flushes the buffer and closes the descriptor; later writes fail.
    void close();

private:
    static int writePacket(void* opaque, std::uint8_t* data, int size);
    static std::int64_t seek(void* opaque, std::int64_t offset, int whence);
    int write(const std::uint8_t* data, int size);
    void startWriteBack();

    int fd_ = -1;
    AVIOContext* context_ = nullptr;
    std::string error_;
    std::int64_t written_ = 0;
    std::int64_t writeBackFrom_ = 0;
    std::int64_t lastWriteBack_ = 0;
};

} // namespace recorder
