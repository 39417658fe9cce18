#include <algorithm>

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
    const auto failing = std::ranges::find(Jobs(), "failing", &Job::name);
    ASSERT_NE(Jobs().end(), failing);
    static_cast<void>(GoodResult(*failing));
    UnloadFilter();
    const DWORD before = NextSlot();
    for (int time = 0; time < 3; ++time) {
        LoadFilter();
        ExpectGoodResult(*failing);
        UnloadFilter();
        ASSERT_EQ(nullptr, FilterHandle());
    }
    EXPECT_EQ(before, NextSlot());
    LoadFilter();
}

}  // namespace
}  // namespace systemtest
