#include "queue/SerialQueue.h"

#include <pthread.h>

namespace recorder {

SerialQueue::SerialQueue(std::string label) : label_(std::move(label)) {
    thread_ = std::thread([this] { run(); });
    // The kernel keeps 15 characters of a thread's name.
    pthread_setname_np(thread_.native_handle(), label_.substr(0, 15).c_str());
}

SerialQueue::~SerialQueue() {
    {
        std::lock_guard lock(lock_);
        stopping_ = true;
        timed_.clear();
    }
    wake_.notify_all();
    thread_.join();
}

void SerialQueue::async(Task task) {
    {
        std::lock_guard lock(lock_);
        if (stopping_ && !isCurrent()) return;
        tasks_.push_back(std::move(task));
    }
    wake_.notify_one();
}

void SerialQueue::asyncAfter(Clock::duration delay, Task task) { asyncAt(Clock::now() + delay, std::move(task)); }

void SerialQueue::asyncAt(Clock::time_point when, Task task) {
    {
        std::lock_guard lock(lock_);
        if (stopping_) return;
        timed_.emplace(when, std::move(task));
    }
    wake_.notify_one();
}

void SerialQueue::sync(const Task& task) {
    if (isCurrent()) {
        task();
        return;
    }
    std::mutex doneLock;
    std::condition_variable doneSignal;
    bool done = false;
    async([&] {
        task();
        std::lock_guard lock(doneLock);
        done = true;
        doneSignal.notify_one();
    });
    std::unique_lock lock(doneLock);
    doneSignal.wait(lock, [&] { return done; });
}

bool SerialQueue::isCurrent() const { return std::this_thread::get_id() == thread_.get_id(); }

bool SerialQueue::nextTask(Task& task) {
    std::unique_lock lock(lock_);
    for (;;) {
        auto now = Clock::now();
        // Timed tasks that are due join the FIFO in deadline order.
        while (!timed_.empty() && timed_.begin()->first <= now) {
            tasks_.push_back(std::move(timed_.begin()->second));
            timed_.erase(timed_.begin());
        }
        if (!tasks_.empty()) {
            task = std::move(tasks_.front());
            tasks_.pop_front();
            return true;
        }
        if (stopping_) return false;
        if (timed_.empty()) wake_.wait(lock);
        else wake_.wait_until(lock, timed_.begin()->first);
    }
}

void SerialQueue::run() {
    Task task;
    while (nextTask(task)) {
        task();
        task = nullptr;
    }
}

} // namespace recorder
