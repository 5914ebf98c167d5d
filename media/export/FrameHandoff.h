#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <vector>

namespace recorder {

// Two BGRA pictures passed between the thread that composes an export and
// the thread that encodes it, so frame i+1 is drawn while frame i is
// encoded. The composing side waits in short steps and asks the caller's
// check between them, which is where cancelling and the watchdog act.
class FrameHandoff {
public:
    // Called every few milliseconds while the composer waits; throws to stop
    // waiting. `waited` is how long this wait has lasted.
    using WaitCheck = std::function<void(std::chrono::milliseconds waited)>;

    FrameHandoff(int width, int height);

    int stride() const { return stride_; }

    // Composer: the picture to draw next, once the encoder has let go of it.
    std::uint8_t* waitForFree(const WaitCheck& check);
    // Composer: the picture just drawn goes to the encoder.
    void submit();
    // Composer: no more pictures; waits until the encoder has finished the file.
    void closeAndWait(const WaitCheck& check);
    // Either side: stop now; the encoder leaves at its next wait.
    void stop();

    // Encoder: the next picture, or null when there is no more to encode.
    const std::uint8_t* waitForFull();
    // Encoder: true when the export stopped early and the file is not to be completed.
    bool wasStopped();
    // Encoder: done with the picture it was given.
    void release();
    // Encoder: the file is complete, or the encoder failed with `failure`.
    void encoderEnded(std::exception_ptr failure);

private:
    void waitUntil(std::unique_lock<std::mutex>& lock, const std::function<bool()>& ready, const WaitCheck& check);

    int stride_;
    std::vector<std::uint8_t> pictures_[2];
    std::mutex lock_;
    std::condition_variable changed_;
    // Pictures drawn and not yet released by the encoder.
    int filled_ = 0;
    int drawIndex_ = 0;
    int encodeIndex_ = 0;
    bool closed_ = false;
    bool stopped_ = false;
    bool ended_ = false;
    std::exception_ptr failure_;
};

} // namespace recorder
