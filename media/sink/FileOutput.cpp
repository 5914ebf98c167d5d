#include "sink/FileOutput.h"

#include "clock/HostClock.h"
#include "sink/CaptureError.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <libavformat/avio.h>
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

namespace recorder {

namespace {

constexpr int bufferSize = 256 * 1024;

} // namespace

FileOutput::FileOutput(const std::filesystem::path& path) {
    fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd_ < 0) throw CaptureError::writerFailed(path.filename().string() + ": " + std::strerror(errno));
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    context_ = buffer ? avio_alloc_context(buffer, bufferSize, 1, this, nullptr, &FileOutput::writePacket, &FileOutput::seek)
                      : nullptr;
    if (!context_) {
        av_free(buffer);
        ::close(fd_);
        throw CaptureError::writerFailed("out of memory");
    }
}

FileOutput::~FileOutput() {
    close();
    if (context_) av_freep(&context_->buffer);
    avio_context_free(&context_);
}

void FileOutput::close() {
    if (fd_ < 0) return;
    avio_flush(context_);
    ::close(fd_);
    fd_ = -1;
}

int FileOutput::writePacket(void* opaque, std::uint8_t* data, int size) {
    return static_cast<FileOutput*>(opaque)->write(data, size);
}

std::int64_t FileOutput::seek(void* opaque, std::int64_t offset, int whence) {
    auto* self = static_cast<FileOutput*>(opaque);
    if (self->fd_ < 0) return AVERROR(EBADF);
    if (whence & AVSEEK_SIZE) {
        struct stat info {};
        return ::fstat(self->fd_, &info) == 0 ? std::int64_t(info.st_size) : AVERROR(errno);
    }
    off_t to = ::lseek(self->fd_, offset, whence & ~AVSEEK_FORCE);
    return to < 0 ? AVERROR(errno) : std::int64_t(to);
}

int FileOutput::write(const std::uint8_t* data, int size) {
    if (fd_ < 0) return AVERROR(EBADF);
    int left = size;
    while (left > 0) {
        ssize_t done = ::write(fd_, data, std::size_t(left));
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) {
            int code = done < 0 ? errno : ENOSPC;
            if (error_.empty()) error_ = std::strerror(code);
            return AVERROR(code);
        }
        data += done;
        left -= int(done);
        written_ += done;
    }
    startWriteBack();
    return size;
}

// Asks the kernel to start writing what is new to the disk, without waiting:
// the encoder's thread must never stall on the disk.
void FileOutput::startWriteBack() {
    std::int64_t now = HostClock::nanoseconds();
    if (now - lastWriteBack_ < HostClock::nanosecondsPerSecond) return;
    lastWriteBack_ = now;
    ::sync_file_range(fd_, writeBackFrom_, written_ - writeBackFrom_, SYNC_FILE_RANGE_WRITE);
    writeBackFrom_ = written_;
}

} // namespace recorder
