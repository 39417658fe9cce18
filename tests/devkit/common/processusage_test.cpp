#include "devkit/common/processusage.h"

#include <gtest/gtest.h>

#include <vector>

#include "devkit/common/uniquehandle.h"

namespace devkit::common {
namespace {

TEST(ProcessUsage, CountsTheHandles) {
    const DWORD before = ProcessUsage::Now().handles;
    {
        std::vector<UniqueHandle> handles;
        for (int i = 0; i < 10; ++i) handles.emplace_back(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        EXPECT_EQ(before + 10, ProcessUsage::Now().handles);
    }
    EXPECT_EQ(before, ProcessUsage::Now().handles);
}

}  // namespace
}  // namespace devkit::common
