#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "callrecorder.h"
#include "devkit/msxml/com/domdocument.h"
#include "leakchecklistener.h"
#include "livecount.h"
#include "mockobject.h"
#include "mockparts.h"
#include "platform/comptr.h"

namespace tests {
namespace {

TEST(LeakCheckListenerTest, FailsATestThatLeavesAMockAlive) {
    const testing::TestInfo& thisTest = *testing::UnitTest::GetInstance()->current_test_info();
    LeakCheckListener listener;
    listener.OnTestStart(thisTest);
    auto pLeaked = MakeMock<MockUnknown>();
    EXPECT_NONFATAL_FAILURE(listener.OnTestEnd(thisTest), "mock objects are still alive");
    pLeaked.Reset();
    listener.OnTestEnd(thisTest);
}

TEST(LeakCheckListenerTest, FailsATestThatLeavesAnObjectOfTheKitAlive) {
    const testing::TestInfo& thisTest = *testing::UnitTest::GetInstance()->current_test_info();
    LeakCheckListener listener;
    listener.OnTestStart(thisTest);
    platform::ComPtr<IUnknown> pLeaked;
    ASSERT_EQ(S_OK, devkit::msxml::CreateDomDocument(__uuidof(IUnknown), pLeaked.PutVoid()));
    EXPECT_NONFATAL_FAILURE(listener.OnTestEnd(thisTest), "objects of the kit's DOM are still alive");
    pLeaked.Reset();
    listener.OnTestEnd(thisTest);
}

TEST(LeakCheckListenerTest, AllowsWhatATestLeavesOnPurpose) {
    const testing::TestInfo& thisTest = *testing::UnitTest::GetInstance()->current_test_info();
    LeakCheckListener listener;
    listener.OnTestStart(thisTest);
    LiveCount::ExpectLeft("mock objects", 1);
    EXPECT_NONFATAL_FAILURE(listener.OnTestEnd(thisTest), "mock objects are still alive");
    auto pLeft = MakeMock<MockUnknown>();
    listener.OnTestEnd(thisTest);
    pLeft.Reset();
    LiveCount::ExpectLeft("mock objects", 0);
    EXPECT_THROW(LiveCount::ExpectLeft("mocks", 1), std::invalid_argument);
}

TEST(CallRecorderTest, FailsTheNthCallOfAnyOrOfOneText) {
    CallRecorder calls;
    calls.FailNth(2, E_ABORT);
    EXPECT_EQ(S_OK, calls.Enter("a"));
    EXPECT_FALSE(calls.HasFailed());
    EXPECT_EQ(E_ABORT, calls.Enter("b"));
    EXPECT_EQ("b", calls.FailedCall());
    EXPECT_EQ(S_OK, calls.Enter("b"));
    calls.Fail("a", E_FAIL);
    EXPECT_EQ(S_OK, calls.Enter("b"));
    EXPECT_EQ(E_FAIL, calls.Enter("a"));
    EXPECT_EQ(2u, calls.Count("a"));
    EXPECT_EQ((std::vector<std::string>{"a", "b", "b", "b", "a"}), calls.Calls());
}

TEST(MockObjectTest, AnswersItsInterfacesAndTheirBase) {
    CallRecorder calls;
    const auto pTicket = MakeMock<MockPrintTicket>(calls, L"/t.xml", "");
    platform::ComPtr<IPartBase> pBase;
    EXPECT_EQ(S_OK, pTicket.QueryTo(pBase));
    platform::ComPtr<IFixedPage> pPage;
    EXPECT_EQ(E_NOINTERFACE, pTicket.QueryTo(pPage));
    EXPECT_EQ(2u, pTicket->References());
}

}  // namespace
}  // namespace tests
