#include "platform/windows.h"

#include <psapi.h>

#include <cstdio>
#include <vector>

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

// Keeps what the filter brings with it of the system: what that leaves when it is unloaded is not the
// filter's.
void KeepSystemLoaded(HMODULE filter) {
    std::vector<HMODULE> modules(1024);
    DWORD bytes = 0;
    const auto room = static_cast<DWORD>(modules.size() * sizeof(HMODULE));
    ASSERT_TRUE(K32EnumProcessModules(GetCurrentProcess(), modules.data(), room, &bytes));
    ASSERT_LE(bytes, room);
    modules.resize(bytes / sizeof(HMODULE));
    for (const HMODULE module : modules) {
        HMODULE pinned = nullptr;
        if (module == filter) continue;
        EXPECT_TRUE(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                       reinterpret_cast<const wchar_t*>(module), &pinned));
    }
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

TEST_F(UnloadingTest, HandlesOfAThreadThatOutlivesTheFilterAreClosedWithIt) {
    const Job& turning = JobNamed("turning");
    static_cast<void>(GoodResult(turning));
    KeepSystemLoaded(FilterHandle());
    UnloadFilter();
    const std::size_t before = Holdings::Now().handles;
    for (int time = 0; time < 3; ++time) {
        LoadFilter();
        ExpectGoodResult(turning);
        UnloadFilter();
    }
    // Each time would leave two.
    EXPECT_GT(before + 3, Holdings::Now().handles);
    LoadFilter();
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
    EXPECT_GE(before.handles + 2, after.handles);
    EXPECT_EQ(before.gdiObjects, after.gdiObjects);
    LoadFilter();
}

}  // namespace
}  // namespace systemtest
