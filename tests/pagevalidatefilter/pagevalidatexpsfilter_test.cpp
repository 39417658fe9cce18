#include "pagevalidatefilter/pagevalidatexpsfilter.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "pagevalidatefilter/filterjob.h"
#include "pagevalidatefilter/module.h"
#include "thrown.h"

namespace pagevalidatefilter {
namespace {

using platform::ComPtr;
using tests::MakeMock;

using PageValidateXpsFilterTest = FilterJobTest;

TEST_F(PageValidateXpsFilterTest, IsALiveObjectOfTheModule) {
    EXPECT_EQ(1, ModuleCount());
    m_pFilter.Reset();
    EXPECT_EQ(0, ModuleCount());
}

TEST_F(PageValidateXpsFilterTest, AnEmptyStreamOpensClosesAndSendsNothing) {
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ((Calls{"RequestWriter", "GetProperty PerUserPrintTicket", "GetProperty PrinterName",
                     "GetProperty UserSecurityToken", "GetStream", "Open", "RequestReader",
                     "GetProperty DriverPropertyBag", "GetInt32 KoraTeskType", "GetXpsPart", "Close provider",
                     "CloseSender"}),
              m_calls.Calls());
}

TEST_F(PageValidateXpsFilterTest, AnXpsDocumentPartIsPassedOnWithoutTouchingTheSettings) {
    const auto pDocument = MakeMock<tests::MockXpsDocument>();
    m_pReader->Add(pDocument.Get());
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(Calls{"SendXpsDocument"}, CallsStarting({"Send", "GetTicket", "Set"}));
    ASSERT_EQ(1u, m_pWriter->Sent().size());
    EXPECT_EQ(static_cast<IUnknown*>(pDocument.Get()), m_pWriter->Sent()[0].Get());
}

TEST_F(PageValidateXpsFilterTest, AnUnknownPartIsPassedOnAsItCame) {
    const auto pPart = MakeMock<tests::MockPrintTicket>(m_calls, L"/t.xml", "");
    m_pReader->Add(pPart.Get());
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(Calls{"SendXpsUnknown"}, CallsStarting({"Send", "GetTicket", "Set"}));
    ASSERT_EQ(1u, m_pWriter->Sent().size());
    EXPECT_EQ(static_cast<IUnknown*>(pPart.Get()), m_pWriter->Sent()[0].Get());
}

TEST_F(PageValidateXpsFilterTest, AJobOfOneSequenceOneDocumentAndThreePagesRefreshesTheSettingsFiveTimes) {
    AddDocument(3);
    EXPECT_EQ(S_OK, Run());
    // Behind each page's own refresh the validator looks for a sheet to fall back to in the document's
    // ticket.
    EXPECT_EQ((Calls{"SetJobTicket", "GetTicket 2", "SendFixedDocumentSequence",      //
                     "SetDocumentTicket", "GetTicket 1", "SendFixedDocument",         //
                     "SetPageTicket", "GetTicket 0", "GetTicket 1", "SendFixedPage",  //
                     "SetPageTicket", "GetTicket 0", "GetTicket 1", "SendFixedPage",  //
                     "SetPageTicket", "GetTicket 0", "GetTicket 1", "SendFixedPage"}),
              CallsStarting({"Set", "GetTicket", "Send"}));
}

TEST_F(PageValidateXpsFilterTest, AFixedPageThatTheValidatorLeavesAloneReachesTheConsumerOnceAndUnchanged) {
    AddDocument(1);
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(1u, m_calls.Count("SendFixedPage"));
    EXPECT_EQ(static_cast<IUnknown*>(m_pages[0].Get()), m_pWriter->Sent().back().Get());
    EXPECT_EQ(nullptr, m_pages[0]->Written());
    EXPECT_EQ(nullptr, m_pages[0]->Ticket());
    EXPECT_EQ(Calls{}, CallsStarting({"GetNewEmptyPart", "GetStream /", "GetWriteStream", "SetPrintTicket"}));
}

TEST_F(PageValidateXpsFilterTest, AFixedPageIsValidatedWithTheSettingsOfItsOwnTicketBeforeItIsSent) {
    m_tickets[kPTPageScope] = TicketText(L"LongEdgeFirst");
    AddDocument(1);
    EXPECT_EQ(S_OK, Run());
    ASSERT_NE(nullptr, m_pages[0]->Written());
    EXPECT_NE(nullptr, m_pages[0]->Ticket());
    EXPECT_EQ(1, m_pages[0]->Written()->Closes());
    const Calls order = CallsStarting({"GetTicket 0", "SetPrintTicket", "GetWriteStream", "SendFixedPage"});
    EXPECT_EQ((Calls{"GetTicket 0", "SetPrintTicket /1.fpage", "GetWriteStream /1.fpage", "SendFixedPage"}),
              order);
}

TEST_F(PageValidateXpsFilterTest, AFeatureThatAPagesTicketLacksKeepsTheSettingOfTheWiderScope) {
    m_tickets[kPTJobScope] = TicketText(L"LongEdgeFirst");
    AddDocument(1);
    EXPECT_EQ(S_OK, Run());
    EXPECT_NE(nullptr, m_pages[0]->Written());
}

TEST_F(PageValidateXpsFilterTest, AFailedValidationMeansThatThePageIsNotSent) {
    m_tickets[kPTPageScope] = TicketText(L"LongEdgeFirst");
    AddDocument(2);
    m_calls.Fail("SetPrintTicket /1.fpage", STG_E_ACCESSDENIED);
    EXPECT_EQ(STG_E_ACCESSDENIED, Run());
    EXPECT_EQ((Calls{"SendFixedDocumentSequence", "SendFixedDocument"}), CallsStarting({"Send"}));
    const Calls calls = m_calls.Calls();
    EXPECT_EQ((Calls{"Close provider", "CloseSender", "RequestShutdown 0x80030005"}),
              Calls(calls.end() - 3, calls.end()));
}

TEST_F(PageValidateXpsFilterTest, AScopeWithoutATicketEndsTheOperationAndThePartIsNotSent) {
    const std::vector<std::pair<std::string, std::size_t>> refusals = {
        {"GetTicket 2", 0}, {"GetTicket 1", 1}, {"GetTicket 0", 2}};
    for (const auto& [call, sent] : refusals) {
        Prepare();
        AddDocument(1);
        m_calls.Fail(call, E_PENDING);
        EXPECT_EQ(E_PENDING, Run()) << call;
        EXPECT_EQ(sent, m_pWriter->Sent().size()) << call;
        EXPECT_EQ(1u, m_calls.Count("RequestShutdown 0x8000000A")) << call;
    }
}

TEST_F(PageValidateXpsFilterTest, AWriterThatRefusesAnyPartEndsTheOperationWithItsCode) {
    const std::vector<std::string> sends = {"SendXpsDocument", "SendFixedDocumentSequence",
                                            "SendFixedDocument", "SendFixedPage", "SendXpsUnknown"};
    for (std::size_t refused = 0; refused < sends.size(); ++refused) {
        Prepare();
        m_pReader->Add(MakeMock<tests::MockXpsDocument>().Get());
        AddDocument(1);
        m_pReader->Add(MakeMock<tests::MockUnknown>().Get());
        m_calls.Fail(sends[refused], STG_E_MEDIUMFULL);
        EXPECT_EQ(STG_E_MEDIUMFULL, Run());
        EXPECT_EQ(Calls(sends.begin(), sends.begin() + static_cast<std::ptrdiff_t>(refused) + 1),
                  CallsStarting({"Send"}));
        EXPECT_EQ(refused, m_pWriter->Sent().size());
        EXPECT_EQ(1u, m_calls.Count("CloseSender"));
        EXPECT_EQ("RequestShutdown 0x80030070", m_calls.Calls().back());
    }
}

TEST_F(PageValidateXpsFilterTest, AMissingWriterIsALogicErrorBeforeTheTicketsAreOpened) {
    m_pCommunicator->SetWriter(nullptr);
    EXPECT_EQ(E_FAIL, Run());
    EXPECT_EQ((Calls{"RequestWriter", "RequestShutdown 0x00000000", "Close provider",
                     "RequestShutdown 0x80004005"}),
              m_calls.Calls());
}

TEST_F(PageValidateXpsFilterTest, AMissingWriterThrowsALogicErrorWithABareMessage) {
    m_pCommunicator->SetWriter(nullptr);
    EXPECT_EQ("m_pWriter could not get.", tests::Thrown<std::logic_error>([&] { m_pFilter->DoOperation(); }));
}

// A consumer that does not own up to it.
class UnrecognisedWriter final : public tests::MockDocumentConsumer {
  public:
    using tests::MockDocumentConsumer::MockDocumentConsumer;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (iid != __uuidof(IXpsDocumentConsumer))
            return tests::MockDocumentConsumer::QueryInterface(iid, ppObject);
        *ppObject = nullptr;
        return E_NOINTERFACE;
    }
};

TEST_F(PageValidateXpsFilterTest, AWriterThatIsNotRecognisedIsClosedAlsoWhenTheShutdownCannotBeRequested) {
    const auto pWriter = MakeMock<UnrecognisedWriter>(m_calls);
    m_pCommunicator->SetWriter(pWriter.Get());
    m_calls.Fail("RequestShutdown 0x00000000", RPC_E_DISCONNECTED);
    EXPECT_EQ(RPC_E_DISCONNECTED, Run());
    EXPECT_EQ((Calls{"RequestWriter", "RequestShutdown 0x00000000", "Close provider", "CloseSender",
                     "RequestShutdown 0x80010108"}),
              m_calls.Calls());
    m_pFilter.Reset();
    m_pCommunicator->SetWriter(nullptr);
    EXPECT_EQ(1u, pWriter->References());
}

TEST_F(PageValidateXpsFilterTest, AWriterThatCannotBeClosedGivesTheResultAndIsNotReported) {
    m_calls.Fail("CloseSender", RPC_E_DISCONNECTED);
    EXPECT_EQ(RPC_E_DISCONNECTED, Run());
    EXPECT_EQ(Calls{}, CallsStarting({"RequestShutdown"}));
}

TEST_F(PageValidateXpsFilterTest, TheWriterIsClosedAlsoWhenTheTicketsCannotBe) {
    m_calls.Fail("Close provider", E_HANDLE);
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(1u, m_calls.Count("CloseSender"));
}

TEST_F(PageValidateXpsFilterTest, TheWriterIsHeldUntilTheFilterGoes) {
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(3u, m_pWriter->References());
    m_pFilter.Reset();
    EXPECT_EQ(2u, m_pWriter->References());
    EXPECT_EQ(1u, m_pBag->References());
    EXPECT_EQ(1u, m_pControl->References());
    EXPECT_EQ(1u, m_pCommunicator->References());
}

TEST_F(PageValidateXpsFilterTest, NoDocumentOutlivesTheOperation) {
    const auto before = devkit::msxml::LiveObjectCount();
    for (auto& [scope, text] : m_tickets) text = TicketText(L"LongEdgeFirst");
    AddDocument(2);
    ASSERT_EQ(S_OK, Run());
    ASSERT_EQ(2u, m_pWriter->NewParts().size());
    EXPECT_EQ(before, devkit::msxml::LiveObjectCount());
}

// What the handler throws for a null part.
std::string Refusal(const std::function<void()>& handler) {
    return tests::Thrown<std::invalid_argument>(handler);
}

TEST_F(PageValidateXpsFilterTest, EachHandlerRefusesANullPartWithItsMessage) {
    const std::string file = "pagevalidatefilter/pagevalidatexpsfilter.cpp(LINE) : ";
    EXPECT_EQ(file + "pXpsDocument is null.\n", Refusal([&] { m_pFilter->OnXpsDocument(nullptr); }));
    EXPECT_EQ(file + "pFixedDocSequence is null.\n",
              Refusal([&] { m_pFilter->OnFixedDocumentSequence(nullptr); }));
    EXPECT_EQ(file + "pFixedDoc is null.\n", Refusal([&] { m_pFilter->OnFixedDocument(nullptr); }));
    EXPECT_EQ(file + "pFixedPage is null.\n", Refusal([&] { m_pFilter->OnFixedPage(nullptr); }));
    EXPECT_EQ(file + "pUnknown is null.\n", Refusal([&] { m_pFilter->OnUnknownPart(nullptr); }));
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

}  // namespace
}  // namespace pagevalidatefilter
