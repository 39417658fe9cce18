#include "platform/srwlock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

namespace platform {
namespace {

TEST(SrwLockTest, LetsOneThreadInAtATime) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    SrwLock lock;
    int count = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                const std::scoped_lock guard(lock);
                ++count;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(kThreads * kRounds, count);
}

}  // namespace
}  // namespace platform
