#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "pagevalidatefilter/filterjob.h"
#include "pagevalidatefilter/module.h"

namespace pagevalidatefilter {
namespace {

class FaultsTest : public FilterJobTest {
  protected:
    [[nodiscard]] bool IsMarkupWritten() const {
        const tests::MockWriteStream* pWritten = m_pages[0]->Written();
        return pWritten != nullptr && !pWritten->Bytes().empty();
    }
};

constexpr HRESULT kCode = STG_E_ACCESSDENIED;

bool StartsWithOneOf(const std::string& text, const std::vector<std::string>& starts) {
    return std::ranges::any_of(starts, [&](const std::string& start) { return text.starts_with(start); });
}

// The result of a job in which the given call failed.
HRESULT ExpectedResult(const std::string& failed, bool isMarkupWritten) {
    // No call is left to fail, or it is one whose failure changes nothing: what a driver or a page may lack,
    // the way back in markup that has been read, the ends of things.
    if (failed.empty()) return S_OK;
    if (failed == "CloseSender") return kCode;
    if (StartsWithOneOf(failed, {"GetProperty DriverPropertyBag", "GetInt32 KoraTeskType", "GetPrintTicket ",
                                 "Seek 0 0", "Close"})) {
        return S_OK;
    }
    // A ticket that cannot be saved is not looked at; markup that cannot be written is the stream buffer's
    // exception.
    if (failed.starts_with("WriteBytes ")) return isMarkupWritten ? S_OK : E_FAIL;
    return kCode;
}

// Fails each call of the bag, the communicator, the reader, the writer, the tickets and the pages in turn, in
// a job with a page that is turned, until there is no call left to fail.
TEST_F(FaultsTest, WhateverCallFailsTheJobEndsWithItsCodeReportedOnceAndNothingIsLeft) {
    m_tickets[kPTPageScope] = TicketText(L"LongEdgeFirst");
    std::size_t nth = 0;
    for (bool failed = true; failed;) {
        ASSERT_LT(nth, 1000u);
        Prepare();
        m_pReader->Add(tests::MakeMock<tests::MockXpsDocument>().Get());
        AddDocument(1);
        m_pReader->Add(tests::MakeMock<tests::MockUnknown>().Get());
        m_calls.FailNth(++nth, kCode);
        const HRESULT hr = Run();
        failed = m_calls.HasFailed();
        const std::string call = m_calls.FailedCall();
        SCOPED_TRACE(std::to_string(nth) + ": " + call);
        const HRESULT expected = ExpectedResult(call, IsMarkupWritten());
        EXPECT_EQ(tests::HresultText(expected), tests::HresultText(hr));
        // The end of the operation is not reported.
        const bool isReported = FAILED(expected) && call != "CloseSender";
        EXPECT_EQ(isReported ? Calls{"RequestShutdown " + tests::HresultText(expected)} : Calls{},
                  CallsStarting({"RequestShutdown"}));
        EXPECT_EQ(isReported ? "RequestShutdown " + tests::HresultText(expected) : "CloseSender",
                  m_calls.Calls().back());
        EXPECT_EQ(1u, m_calls.Count("Close provider"));
        EXPECT_EQ(call == "RequestWriter" ? 0u : 1u, m_calls.Count("CloseSender"));
        m_pFilter.Reset();
        EXPECT_EQ(0, ModuleCount());
        EXPECT_EQ(2u, m_pReader->References());
        EXPECT_EQ(2u, m_pWriter->References());
        EXPECT_EQ(1u, m_pBag->References());
        EXPECT_EQ(1u, m_pCommunicator->References());
        EXPECT_EQ(1u, m_pControl->References());
    }
    EXPECT_GT(nth, 30u);
}

}  // namespace
}  // namespace pagevalidatefilter
