#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "pagevalidatefilter/filterjob.h"
#include "pagevalidatefilter/module.h"

namespace pagevalidatefilter {
namespace {

using FaultsTest = FilterJobTest;

constexpr HRESULT kCode = STG_E_ACCESSDENIED;

// What becomes of a job in which a call fails, by the start of the call's text.
struct Consequence {
    std::string call;
    HRESULT result;
    bool isReported;
};

const std::vector<Consequence>& Consequences() {
    static const std::vector<Consequence> consequences = {
        {"RequestWriter", kCode, true},
        {"GetProperty PerUserPrintTicket", kCode, true},
        {"GetProperty PrinterName", kCode, true},
        {"GetProperty UserSecurityToken", kCode, true},
        {"GetStream", kCode, true},  // of the user's ticket, and of the page
        {"Open", kCode, true},
        {"RequestReader", kCode, true},
        // What a driver or a page may lack.
        {"GetProperty DriverPropertyBag", S_OK, false},
        {"GetInt32 KoraTeskType", S_OK, false},
        {"GetPrintTicket /1.fpage", S_OK, false},
        {"GetXpsPart", kCode, true},
        {"SendXpsDocument", kCode, true},
        {"SetJobTicket", kCode, true},
        {"SetDocumentTicket", kCode, true},
        {"SetPageTicket", kCode, true},
        {"GetTicket 2", kCode, true},
        {"GetTicket 1", kCode, true},
        {"GetTicket 0", kCode, true},
        {"SendFixedDocumentSequence", kCode, true},
        {"SendFixedDocument", kCode, true},
        {"GetNewEmptyPart .xml\\pagevalidator_", kCode, true},
        {"SetPrintTicket /1.fpage", kCode, true},
        {"GetWriteStream /1.fpage", kCode, true},
        {"ReadBytes", kCode, true},
        // Back to the start of markup that has been read.
        {"Seek 0 0", S_OK, false},
        {"SendFixedPage", kCode, true},
        {"SendXpsUnknown", kCode, true},
        // The ends of things. A stream has no result to close with.
        {"Close provider", S_OK, false},
        {"CloseSender", kCode, false},
        {"Close", S_OK, false},
    };
    return consequences;
}

// The ticket, which is written before the markup, is not looked at when it cannot be saved; markup that
// cannot be written is the stream buffer's exception.
const Consequence kTicketWrite = {"WriteBytes", S_OK, false};
const Consequence kMarkupWrite = {"WriteBytes", E_FAIL, true};

const Consequence* ConsequenceOf(const std::string& call, bool isMarkupOpen) {
    if (call.starts_with("WriteBytes ")) return isMarkupOpen ? &kMarkupWrite : &kTicketWrite;
    const auto found = std::ranges::find_if(
        Consequences(), [&](const Consequence& each) { return call.starts_with(each.call); });
    return found == Consequences().end() ? nullptr : &*found;
}

// Fails each call of the bag, the communicator, the reader, the writer, the tickets and the pages in turn, in
// a job with a page that is turned, until there is no call left to fail.
TEST_F(FaultsTest, WhateverCallFailsTheJobEndsWithItsCodeReportedOnceAndNothingIsLeft) {
    m_tickets[kPTPageScope] = TicketText(L"LongEdgeFirst");
    std::set<const Consequence*> met;
    for (std::size_t nth = 1;; ++nth) {
        ASSERT_LT(nth, 1000u);
        Prepare();
        m_pReader->Add(tests::MakeMock<tests::MockXpsDocument>().Get());
        AddDocument(1);
        m_pReader->Add(tests::MakeMock<tests::MockUnknown>().Get());
        m_calls.FailNth(nth, kCode);
        const HRESULT hr = Run();
        if (!m_calls.HasFailed()) {
            EXPECT_EQ(S_OK, hr);
            break;
        }
        const std::string call = m_calls.FailedCall();
        SCOPED_TRACE(std::to_string(nth) + ": " + call);
        const Calls calls = m_calls.Calls();
        const auto failed = calls.begin() + static_cast<std::ptrdiff_t>(nth) - 1;
        const bool isMarkupOpen = std::find(calls.begin(), failed, "GetWriteStream /1.fpage") != failed;
        const Consequence* const pExpected = ConsequenceOf(call, isMarkupOpen);
        ASSERT_NE(nullptr, pExpected);
        met.insert(pExpected);

        EXPECT_EQ(tests::HresultText(pExpected->result), tests::HresultText(hr));
        const std::string report = "RequestShutdown " + tests::HresultText(pExpected->result);
        EXPECT_EQ(pExpected->isReported ? Calls{report} : Calls{}, CallsStarting({"RequestShutdown"}));
        EXPECT_EQ(pExpected->isReported ? report : "CloseSender", calls.back());
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
    for (const Consequence& consequence : Consequences()) {
        EXPECT_TRUE(met.contains(&consequence)) << consequence.call << " was never made";
    }
    EXPECT_TRUE(met.contains(&kTicketWrite) && met.contains(&kMarkupWrite));
}

}  // namespace
}  // namespace pagevalidatefilter
