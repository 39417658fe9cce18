#include <cstdio>

#include "endurance.h"
#include "faultedjob.h"

namespace systemtest {
namespace {

class UnloadingTest : public FaultedJobTest {};

// The slot of thread storage that comes next.
DWORD NextSlot() {
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
}

// A process has a thousand; without one there are no exceptions, and the process is ended.
TEST_F(UnloadingTest, AFilterThatIsUnloadedLeavesNoSlotOfThreadStorage) {
    const Job& failing = JobNamed("failing");
    static_cast<void>(GoodResult(failing));
    UnloadFilter();
    const DWORD before = NextSlot();
    for (int time = 0; time < 3; ++time) {
        LoadFilter();
        ExpectGoodResult(failing);
        UnloadFilter();
        ASSERT_EQ(nullptr, FilterHandle());
    }
    EXPECT_EQ(before, NextSlot());
    LoadFilter();
}

// Each time would leave two of a thread, and two more where an exception was thrown.
TEST_F(UnloadingTest, HandlesOfAThreadThatOutlivesTheFilterAndOfItsExceptionsAreClosedWithIt) {
    for (const char* const name : {"turning", "failing"}) {
        const Job& job = JobNamed(name);
        static_cast<void>(GoodResult(job));
        KeepSystemLoaded(FilterHandle());
        UnloadFilter();
        const std::size_t before = Holdings::Now().handles;
        for (int time = 0; time < 3; ++time) {
            LoadFilter();
            ExpectGoodResult(job);
            UnloadFilter();
        }
        EXPECT_GE(before + kHandlesOfTheSystem, Holdings::Now().handles) << name;
        LoadFilter();
    }
}

TEST_F(UnloadingTest, OfAFilterThatIsUnloadedNoMoreIsKeptThanItsRuntimeKeeps) {
    const int times = IsLong() ? 1000 : 60;
    const int first = IsLong() ? 100 : 20;
    // The library of threads never gives back its records of threads, some 1400 bytes; and Wine's SAX reader
    // keeps 96 of each of two pages.
    constexpr double kMostOfALoad = 1700;
    const Job& turning = JobNamed("turning");
    static_cast<void>(GoodResult(turning));
    KeepSystemLoaded(FilterHandle());
    UnloadFilter();
    Holdings before;
    for (int time = 0; time < times; ++time) {
        if (time == first) before = Holdings::Now();
        LoadFilter();
        // The C++ runtime keeps some hundred bytes of a thread that has used the filter until the thread
        // ends.
        ExpectGoodResult(turning);
        UnloadFilter();
        ASSERT_EQ(nullptr, FilterHandle());
        ASSERT_FALSE(HasFailure()) << "time " << time;
    }
    const Holdings after = Holdings::Now();
    const auto left = static_cast<double>(after.heapBytes) - static_cast<double>(before.heapBytes);
    std::printf("each of %d times left %.0f bytes, %zu and %zu handles\n", times - first,
                left / (times - first), before.handles, after.handles);
    EXPECT_GT(kMostOfALoad * (times - first), left);
    EXPECT_GE(before.handles + kHandlesOfTheSystem, after.handles);
    EXPECT_EQ(before.gdiObjects, after.gdiObjects);
    LoadFilter();
}

}  // namespace
}  // namespace systemtest
