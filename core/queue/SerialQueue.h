#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

namespace recorder {

// One worker thread with a FIFO of closures, named like the queue so that it
// shows up by name in a debugger or `top -H`. Everything a queue owns is
// touched only by its tasks, which is what makes the owner's state safe
// without locks.
class SerialQueue {
public:
    using Task = std::function<void()>;
    using Clock = std::chrono::steady_clock;

    explicit SerialQueue(std::string label);
    // Runs the tasks already waiting, drops timed ones that are not yet due,
    // and joins the thread.
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    void async(Task task);
    void asyncAfter(Clock::duration delay, Task task);
    void asyncAt(Clock::time_point when, Task task);
    // Waits for the task; from the queue's own thread it runs at once.
    void sync(const Task& task);

    template <class F>
    auto syncResult(F&& function) -> std::invoke_result_t<F> {
        using Result = std::invoke_result_t<F>;
        if constexpr (std::is_void_v<Result>) {
            sync(std::forward<F>(function));
        } else {
            std::optional<Result> result;
            sync([&] { result.emplace(function()); });
            return std::move(*result);
        }
    }

    bool isCurrent() const;
    const std::string& label() const { return label_; }

private:
    void run();
    bool nextTask(Task& task);

    std::string label_;
    std::mutex lock_;
    std::condition_variable wake_;
    std::deque<Task> tasks_;
    std::multimap<Clock::time_point, Task> timed_;
    bool stopping_ = false;
    std::thread thread_;
};

} // namespace recorder
