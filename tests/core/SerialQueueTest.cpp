#include "queue/SerialQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <pthread.h>
#include <thread>
#include <vector>

using namespace recorder;
using namespace std::chrono_literals;

TEST(SerialQueue, RunsTasksOneAtATimeInTheOrderGivenOnItsNamedThread) {
    SerialQueue queue("screen.samples.and.more");
    std::vector<int> order;
    std::atomic<int> running{0};
    bool overlapped = false;
    for (int i = 0; i < 100; ++i) {
        queue.async([&, i] {
            overlapped |= ++running > 1;
            order.push_back(i);
            --running;
        });
    }
    char name[16] = {};
    queue.sync([&] { pthread_getname_np(pthread_self(), name, sizeof name); });
    EXPECT_EQ(std::string(name), "screen.samples.");
    EXPECT_FALSE(overlapped);
    ASSERT_EQ(order.size(), 100u);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(order[std::size_t(i)], i);
}

TEST(SerialQueue, RunsTimedTasksByDeadlineBetweenOthers) {
    SerialQueue queue("timed");
    std::vector<std::string> order;
    auto start = SerialQueue::Clock::now();
    queue.asyncAfter(60ms, [&] { order.push_back("late"); });
    queue.asyncAfter(20ms, [&] { order.push_back("early"); });
    queue.async([&] { order.push_back("now"); });
    std::this_thread::sleep_for(100ms);
    queue.sync([] {});
    EXPECT_EQ(order, (std::vector<std::string>{"now", "early", "late"}));
    EXPECT_GE(SerialQueue::Clock::now() - start, 60ms);
}

TEST(SerialQueue, SyncFromItsOwnThreadRunsAtOnceInsteadOfWaitingForItself) {
    SerialQueue queue("nested");
    int value = queue.syncResult([&] { return queue.syncResult([] { return 7; }) + 1; });
    EXPECT_EQ(value, 8);
}

TEST(SerialQueue, FinishesWhatWaitsAndDropsTimedTasksWhenDestroyed) {
    std::atomic<int> ran{0};
    {
        SerialQueue queue("ending");
        queue.async([&] {
            std::this_thread::sleep_for(20ms);
            ++ran;
        });
        queue.async([&] { ++ran; });
        queue.asyncAfter(10s, [&] { ran += 100; });
    }
    EXPECT_EQ(ran, 2);
}
