#include "devkit/common/leave.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace devkit::common {
namespace {

TEST(LeaveDeathTest, TheStatusIsTheOneGivenAndNothingIsRunThatWaitsForTheEnd) {
    EXPECT_EXIT(
        {
            std::atexit([] { std::_Exit(1); });
            LeaveProcess(7);
        },
        testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace devkit::common
