#include "export/FrameHandoff.h"

namespace recorder {

namespace {

// The composer looks at cancel and the watchdog this often while it waits.
constexpr auto pollStep = std::chrono::milliseconds(5);

} // namespace

FrameHandoff::FrameHandoff(int width, int height) : stride_(width * 4) {
    for (auto& picture : pictures_) picture.assign(std::size_t(stride_) * std::size_t(height), 0);
}

void FrameHandoff::waitUntil(std::unique_lock<std::mutex>& lock, const std::function<bool()>& ready,
                             const WaitCheck& check) {
    auto start = std::chrono::steady_clock::now();
    for (;;) {
        if (failure_) std::rethrow_exception(failure_);
        if (ready()) return;
        auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
        lock.unlock();
        check(waited);
        lock.lock();
        if (failure_) std::rethrow_exception(failure_);
        if (ready()) return;
        changed_.wait_for(lock, pollStep);
    }
}

std::uint8_t* FrameHandoff::waitForFree(const WaitCheck& check) {
    std::unique_lock lock(lock_);
    waitUntil(lock, [this] { return filled_ < 2; }, check);
    return pictures_[drawIndex_].data();
}

void FrameHandoff::submit() {
    {
        std::lock_guard lock(lock_);
        ++filled_;
        drawIndex_ ^= 1;
    }
    changed_.notify_all();
}

void FrameHandoff::closeAndWait(const WaitCheck& check) {
    std::unique_lock lock(lock_);
    closed_ = true;
    changed_.notify_all();
    waitUntil(lock, [this] { return ended_; }, check);
}

void FrameHandoff::stop() {
    {
        std::lock_guard lock(lock_);
        stopped_ = true;
    }
    changed_.notify_all();
}

const std::uint8_t* FrameHandoff::waitForFull() {
    std::unique_lock lock(lock_);
    changed_.wait(lock, [this] { return stopped_ || filled_ > 0 || closed_; });
    if (stopped_ || filled_ == 0) return nullptr;
    return pictures_[encodeIndex_].data();
}

bool FrameHandoff::wasStopped() {
    std::lock_guard lock(lock_);
    return stopped_;
}

void FrameHandoff::release() {
    {
        std::lock_guard lock(lock_);
        --filled_;
        encodeIndex_ ^= 1;
    }
    changed_.notify_all();
}

void FrameHandoff::encoderEnded(std::exception_ptr failure) {
    {
        std::lock_guard lock(lock_);
        ended_ = true;
        failure_ = failure;
    }
    changed_.notify_all();
}

} // namespace recorder
