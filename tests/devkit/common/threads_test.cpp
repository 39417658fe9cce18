#include "devkit/common/threads.h"

#include <gtest/gtest.h>

#include <atomic>

#include "gate.h"

namespace devkit::common {
namespace {

unsigned CountOf(unsigned wanted, std::size_t most) {
    std::atomic<unsigned> count = 0;
    RunInThreads(wanted, most, [&] { ++count; });
    return count;
}

TEST(RunInThreads, RunsTheBodyOnAsManyAsAreWantedButNoMoreThanThereIsWorkFor) {
    EXPECT_EQ(3U, CountOf(3, 100));
    EXPECT_EQ(2U, CountOf(3, 2));
    EXPECT_EQ(0U, CountOf(3, 0));
    EXPECT_LE(1U, CountOf(0, 100));
}

TEST(RunInThreads, RunsThemAtOnce) {
    tests::Gate all(4);
    RunInThreads(4, 4, [&] { all.Pass(); });
}

}  // namespace
}  // namespace devkit::common
