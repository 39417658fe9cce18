#include "devkit/pipeline/threadsinside.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace devkit::pipeline {
namespace {

TEST(ThreadsInside, AreCountedWhereverTheyWait) {
    const HMODULE self = GetModuleHandleW(nullptr);
    const std::size_t before = CountThreadsInside(self);
    std::atomic<int> started = 0;
    std::atomic<bool> isOver = false;
    std::thread waiting([&] {
        ++started;
        while (!isOver) Sleep(10);
    });
    std::thread busy([&] {
        ++started;
        while (!isOver) {
        }
    });
    while (started != 2) Sleep(1);
    EXPECT_EQ(before + 2, CountThreadsInside(self));
    // The same threads stand in no other module's code but the system's.
    EXPECT_EQ(0U, CountThreadsInside(LoadLibraryW(L"version.dll")));
    isOver = true;
    waiting.join();
    busy.join();
    EXPECT_EQ(before, CountThreadsInside(self));
}

}  // namespace
}  // namespace devkit::pipeline
