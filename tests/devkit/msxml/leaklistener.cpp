#include <gtest/gtest.h>

#include "devkit/msxml/domdocument.h"

namespace devkit::msxml::tests {
namespace {

// Fails each test that leaves an object of the library behind.
class LeakListener final : public testing::EmptyTestEventListener {
  public:
    void OnTestEnd(const testing::TestInfo&) override { EXPECT_EQ(LiveObjectCount(), 0); }
};

const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new LeakListener);
    return true;
}();

TEST(LeakListener, IsInForce) { EXPECT_TRUE(isListening); }

}  // namespace
}  // namespace devkit::msxml::tests
