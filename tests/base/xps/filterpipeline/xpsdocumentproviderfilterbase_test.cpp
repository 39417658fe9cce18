#include "base/xps/filterpipeline/xpsdocumentproviderfilterbase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "base/logging/exceptions.h"
#include "domtest.h"
#include "mockparts.h"
#include "mockpipeline.h"
#include "mockproperties.h"
#include "mockstreams.h"
#include "platform/comptr.h"
#include "thrown.h"

namespace base::xps::filterpipeline {
namespace {

using platform::ComPtr;
using tests::MakeMock;

using Calls = std::vector<std::string>;

const HANDLE kToken = reinterpret_cast<HANDLE>(0x4321);

// What a provider of tickets was told, in place of the platform's.
class FakeTicketProvider final : public printschema::PrintTicketProvider {
  public:
    explicit FakeTicketProvider(tests::CallRecorder& calls) : m_calls(calls) {}

    HRESULT Open(IPrintReadStream* pBaseTicket, BSTR printerName, HANDLE userToken) override {
        const bool isToken = userToken == kToken;
        return m_calls.Enter(std::string("Open ") + (pBaseTicket == nullptr ? "no stream " : "stream ") +
                             (printerName == nullptr ? "no name" : tests::Narrow(printerName)) +
                             (isToken ? " token" : " no token"));
    }
    HRESULT Close() override { return m_calls.Enter("Close provider"); }
    HRESULT SetJobTicket(IFixedDocumentSequence* pPart, IXMLDOMDocument2* pExtra) override {
        return Set("SetJobTicket", pPart, pExtra);
    }
    HRESULT SetDocumentTicket(IFixedDocument* pPart, IXMLDOMDocument2* pExtra) override {
        return Set("SetDocumentTicket", pPart, pExtra);
    }
    HRESULT SetPageTicket(IFixedPage* pPart, IXMLDOMDocument2* pExtra) override {
        return Set("SetPageTicket", pPart, pExtra);
    }

  private:
    template <typename Part>
    HRESULT Set(const char* call, Part* pPart, IXMLDOMDocument2* pExtra) {
        platform::Bstr uri;
        EXPECT_EQ(S_OK, pPart->GetUri(uri.Put()));
        EXPECT_NE(nullptr, pExtra);
        if (m_pExtra == nullptr) m_pExtra = pExtra;
        EXPECT_EQ(m_pExtra, pExtra);
        return m_calls.Enter(std::string(call) + " " + tests::Narrow(uri.Get()));
    }

    tests::CallRecorder& m_calls;
    IXMLDOMDocument2* m_pExtra = nullptr;
};

// A filter that notes the parts that its handlers get.
class ListingFilter final : public XpsDocumentProviderFilterBase {
  public:
    explicit ListingFilter(tests::CallRecorder& calls)
        : XpsDocumentProviderFilterBase(std::make_unique<FakeTicketProvider>(calls)), m_calls(calls) {}

    using XpsDocumentProviderFilterBase::DoOperation;
    using XpsDocumentProviderFilterBase::GetPrintTicketProvider;

  private:
    void OnUnknownPart(IUnknown* pPart) override { Note("OnUnknownPart", pPart); }
    void OnFixedPage(IFixedPage* pPart) override { Note("OnFixedPage", pPart); }
    void OnFixedDocument(IFixedDocument* pPart) override { Note("OnFixedDocument", pPart); }
    void OnFixedDocumentSequence(IFixedDocumentSequence* pPart) override {
        Note("OnFixedDocumentSequence", pPart);
    }
    void OnXpsDocument(IXpsDocument* pPart) override { Note("OnXpsDocument", pPart); }

    void Note(const char* call, IUnknown* pPart) {
        parts.push_back(pPart);
        logging::ThrowIfFailed(m_calls.Enter(call));
    }

    tests::CallRecorder& m_calls;

  public:
    // Not referenced: identities to compare while a test holds the parts.
    std::vector<IUnknown*> parts;
};

// A part that is of the given kinds and of no other.
class PartOfKinds final
    : public tests::MockObject<IFixedPage, IFixedDocument, IFixedDocumentSequence, IXpsDocument> {
  public:
    explicit PartOfKinds(std::vector<IID> kinds) : m_kinds(std::move(kinds)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        *ppObject = nullptr;
        if (std::ranges::find(m_kinds, iid) == m_kinds.end()) return E_NOINTERFACE;
        return ComIdentity::QueryInterface(iid, ppObject);
    }

    HRESULT STDMETHODCALLTYPE GetUri(BSTR* pUri) override {
        *pUri = platform::Bstr(L"/part").Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetPrintTicket(IPartPrintTicket**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPrintTicket(IPartPrintTicket*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetThumbnail(IPartThumbnail**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetThumbnail(IPartThumbnail*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPartCompression(EXpsCompressionOptions*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPartCompression(EXpsCompressionOptions) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPagePart(const wchar_t*, IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetWriteStream(IPrintWriteStream**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPagePart(IUnknown*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteResource(const wchar_t*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetXpsPartIterator(IXpsPartIterator**) override { return E_NOTIMPL; }

  private:
    const std::vector<IID> m_kinds;
};

class PartLoopTest : public tests::DomTest {
  protected:
    PartLoopTest() {
        m_pBag->SetObject(L"PerUserPrintTicket",
                          MakeMock<tests::MockReadStreamFactory>(m_calls, "<t/>").Get());
        m_pBag->SetText(L"PrinterName", L"Printer");
        m_pBag->SetHandle(L"UserSecurityToken", kToken);
        m_pCommunicator->SetReader(m_pReader.Get());
    }

    // A new reader without parts and a new filter.
    void Renew() {
        m_pReader = MakeMock<tests::MockDocumentProvider>(m_calls);
        m_pCommunicator->SetReader(m_pReader.Get());
        m_pFilter = ComPtr<ListingFilter>::Adopt(new ListingFilter(m_calls));
    }
    HRESULT Run() {
        EXPECT_EQ(S_OK, m_pFilter->InitializeFilter(m_pCommunicator.Get(), m_pBag.Get(), m_pControl.Get()));
        m_calls.Clear();
        return Start();
    }
    HRESULT Start() { return m_pFilter->StartOperation(); }

    // What stands before the first part, and what follows the last one.
    static Calls Opened() {
        return {"GetProperty PerUserPrintTicket", "GetProperty PrinterName",
                "GetProperty UserSecurityToken",  "GetStream",
                "Open stream Printer token",      "RequestReader",
                "GetProperty DriverPropertyBag"};
    }
    static Calls Joined(Calls first, const Calls& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }
    static Calls OpenedThen(const Calls& rest) { return Joined(Opened(), rest); }

    tests::CallRecorder m_calls;
    ComPtr<tests::MockCommunicator> m_pCommunicator = MakeMock<tests::MockCommunicator>(m_calls);
    ComPtr<tests::MockPropertyBag> m_pBag = MakeMock<tests::MockPropertyBag>(m_calls);
    ComPtr<tests::MockPipelineControl> m_pControl = MakeMock<tests::MockPipelineControl>(m_calls);
    ComPtr<tests::MockDocumentProvider> m_pReader = MakeMock<tests::MockDocumentProvider>(m_calls);
    ComPtr<ListingFilter> m_pFilter = ComPtr<ListingFilter>::Adopt(new ListingFilter(m_calls));
};

TEST_F(PartLoopTest,
       AProviderThatReturnsNoPartAtTheFirstCallEndsTheOperationSuccessfullyWithNoHandlerCalled) {
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(OpenedThen({"GetXpsPart", "Close provider"}), m_calls.Calls());
}

TEST_F(PartLoopTest, EachPartGoesFirstToTheTicketProviderAndThenToTheHandlerOfItsKind) {
    const auto pXpsDocument = MakeMock<tests::MockXpsDocument>();
    const auto pSequence = MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/s.fdseq");
    const auto pDocument = MakeMock<tests::MockFixedDocument>(m_calls, L"/d.fdoc");
    const auto pPage = MakeMock<tests::MockFixedPage>(m_calls, L"/1.fpage", "<FixedPage/>");
    const auto pOther = MakeMock<tests::MockUnknown>();
    for (IUnknown* pPart : std::initializer_list<IUnknown*>{pXpsDocument.Get(), pSequence.Get(),
                                                            pDocument.Get(), pPage.Get(), pOther.Get()}) {
        m_pReader->Add(pPart);
    }
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(OpenedThen({"GetXpsPart", "OnXpsDocument",                                     //
                          "GetXpsPart", "SetJobTicket /s.fdseq", "OnFixedDocumentSequence",  //
                          "GetXpsPart", "SetDocumentTicket /d.fdoc", "OnFixedDocument",      //
                          "GetXpsPart", "SetPageTicket /1.fpage", "OnFixedPage",             //
                          "GetXpsPart", "OnUnknownPart",                                     //
                          "GetXpsPart", "Close provider"}),
              m_calls.Calls());
    EXPECT_EQ((std::vector<IUnknown*>{pXpsDocument.Get(), pSequence.Get(), pDocument.Get(), pPage.Get(),
                                      pOther.Get()}),
              m_pFilter->parts);
    EXPECT_EQ(1u, pXpsDocument->References());
    EXPECT_EQ(1u, pSequence->References());
    EXPECT_EQ(1u, pDocument->References());
    EXPECT_EQ(1u, pPage->References());
    EXPECT_EQ(1u, pOther->References());
}

TEST_F(PartLoopTest, APartOfTwoKindsIsTakenForTheOneThatStandsFirstInTheOrderOfTheQueries) {
    struct Kind {
        IID iid;
        Calls handled;
    };
    const std::vector<Kind> kinds = {
        {__uuidof(IXpsDocument), {"OnXpsDocument"}},
        {__uuidof(IFixedDocumentSequence), {"SetJobTicket /part", "OnFixedDocumentSequence"}},
        {__uuidof(IFixedDocument), {"SetDocumentTicket /part", "OnFixedDocument"}},
        {__uuidof(IFixedPage), {"SetPageTicket /part", "OnFixedPage"}}};
    for (std::size_t first = 0; first < kinds.size(); ++first) {
        for (std::size_t second = first + 1; second < kinds.size(); ++second) {
            SCOPED_TRACE(kinds[first].handled.back() + " before " + kinds[second].handled.back());
            Renew();
            const auto pPart = MakeMock<PartOfKinds>(std::vector{kinds[first].iid, kinds[second].iid});
            m_pReader->Add(static_cast<IXpsDocument*>(pPart.Get()));
            EXPECT_EQ(S_OK, Run());
            const Calls handled = Joined({"GetXpsPart"}, kinds[first].handled);
            EXPECT_EQ(OpenedThen(Joined(handled, {"GetXpsPart", "Close provider"})), m_calls.Calls());
            EXPECT_EQ(1u, pPart->References());
        }
    }
}

TEST_F(PartLoopTest, APartThatIsBothAnIXpsDocumentAndSomethingElseGoesToOnXpsDocumentOnly) {
    const auto pPart =
        MakeMock<PartOfKinds>(std::vector<IID>{__uuidof(IFixedPage), __uuidof(IFixedDocument),
                                               __uuidof(IFixedDocumentSequence), __uuidof(IXpsDocument)});
    m_pReader->Add(static_cast<IFixedDocument*>(pPart.Get()));
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(OpenedThen({"GetXpsPart", "OnXpsDocument", "GetXpsPart", "Close provider"}), m_calls.Calls());
}

TEST_F(PartLoopTest, APartOfAnUnknownKindReachesOnUnknownPartUnchanged) {
    const auto pTicket = MakeMock<tests::MockPrintTicket>(m_calls, L"/t.xml", "");
    m_pReader->Add(pTicket.Get());
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(std::vector<IUnknown*>{pTicket.Get()}, m_pFilter->parts);
    EXPECT_EQ(1u, pTicket->References());
}

TEST_F(PartLoopTest, APartIsReleasedBeforeTheNextOneIsAskedFor) {
    const auto pPage = MakeMock<tests::MockFixedPage>(m_calls, L"/1.fpage", "<FixedPage/>");
    m_pReader->Add(pPage.Get());
    std::vector<ULONG> references;
    m_pReader->SetHook([&](std::size_t) { references.push_back(pPage->References()); });
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ((std::vector<ULONG>{2, 1}), references);
}

TEST_F(PartLoopTest, TheReaderIsHeldUntilTheFilterGoes) {
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(3u, m_pReader->References());
    m_pFilter.Reset();
    EXPECT_EQ(2u, m_pReader->References());
}

TEST_F(PartLoopTest, EachMissingPropertyFailsWithTheBagsCodeBeforeAnyPartIsRead) {
    const std::vector<std::wstring> names = {L"PerUserPrintTicket", L"PrinterName", L"UserSecurityToken"};
    for (std::size_t missing = 0; missing < names.size(); ++missing) {
        m_pBag->Remove(names[names.size() - 1 - missing]);
        Calls expected;
        for (std::size_t read = 0; read < names.size() - missing; ++read) {
            expected.push_back("GetProperty " + tests::Narrow(names[read].c_str()));
        }
        expected.push_back("Close provider");
        expected.push_back("RequestShutdown 0x80070490");
        EXPECT_EQ(E_ELEMENT_NOT_FOUND, Run());
        EXPECT_EQ(expected, m_calls.Calls());
    }
}

TEST_F(PartLoopTest, AMissingUserSecurityTokenFailsWithTheBagsCodeBeforeAnyPartIsRead) {
    m_pBag->Remove(L"UserSecurityToken");
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, Run());
    EXPECT_EQ(0u, m_calls.Count("GetXpsPart"));
    EXPECT_EQ(0u, m_calls.Count("RequestReader"));
}

TEST_F(PartLoopTest, AUserTicketThatIsNoStreamFactoryFails) {
    m_pBag->SetObject(L"PerUserPrintTicket", MakeMock<tests::MockUnknown>().Get());
    EXPECT_EQ(E_NOINTERFACE, Run());
    m_pBag->SetText(L"PerUserPrintTicket", L"<t/>");
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Run());
    m_pBag->SetObject(L"PerUserPrintTicket", nullptr);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Run());
    EXPECT_EQ(0u, m_calls.Count("RequestReader"));
}

TEST_F(PartLoopTest, ATokenOfAnotherTypeFailsBecauseTheProviderWouldRunAsTheService) {
    m_pBag->SetText(L"UserSecurityToken", L"token");
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Run());
    EXPECT_EQ(0u, m_calls.Count("Open stream Printer no token"));
}

TEST_F(PartLoopTest, ANullTokenFailsBecauseNobodyWouldBeImpersonated) {
    m_pBag->SetHandle(L"UserSecurityToken", nullptr);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Run());
    EXPECT_EQ(0u, m_calls.Count("Open stream Printer no token"));
    EXPECT_EQ(0u, m_calls.Count("RequestReader"));
}

TEST_F(PartLoopTest, ANameOfAnotherTypeIsNoNameForTheTicketProvider) {
    m_pBag->SetEmpty(L"PrinterName");
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(1u, m_calls.Count("Open stream no name token"));
}

TEST_F(PartLoopTest, AMissingReaderIsALogicErrorAfterThePipelineWasAskedToShutDown) {
    m_pCommunicator->SetReader(nullptr);
    EXPECT_EQ(E_FAIL, Run());
    EXPECT_EQ(
        (Calls{"GetProperty PerUserPrintTicket", "GetProperty PrinterName", "GetProperty UserSecurityToken",
               "GetStream", "Open stream Printer token", "RequestReader", "RequestShutdown 0x00000000",
               "Close provider", "RequestShutdown 0x80004005"}),
        m_calls.Calls());
}

TEST_F(PartLoopTest, AMissingReaderThrowsALogicErrorWithABareMessage) {
    m_pCommunicator->SetReader(nullptr);
    EXPECT_EQ(S_OK, m_pFilter->InitializeFilter(m_pCommunicator.Get(), m_pBag.Get(), m_pControl.Get()));
    EXPECT_EQ("m_pReader could not get.", tests::Thrown<std::logic_error>([&] { m_pFilter->DoOperation(); }));
}

TEST_F(PartLoopTest, AFailureToCloseTheTicketProviderDoesNotChangeTheResult) {
    EXPECT_EQ(S_OK, m_pFilter->InitializeFilter(m_pCommunicator.Get(), m_pBag.Get(), m_pControl.Get()));
    m_calls.Clear();
    m_calls.Fail("Close provider", E_HANDLE);
    EXPECT_EQ(S_OK, Start());
    EXPECT_TRUE(m_calls.HasFailed());
}

TEST_F(PartLoopTest, TheBaseDoesNothingOnShutdown) {
    EXPECT_EQ(S_OK, m_pFilter->ShutdownOperation());
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

// Fails each call in turn: whatever fails, the operation ends with that code, closes the provider and reports
// the code once, and every object is released.
TEST_F(PartLoopTest, WhateverCallFailsTheOperationEndsWithItsCodeReportedOnce) {
    constexpr HRESULT kCode = STG_E_ACCESSDENIED;
    // A missing driver property bag is no failure; failing to close the provider or to report changes nothing
    // in what was reported.
    const std::vector<std::string> harmless = {"GetProperty DriverPropertyBag", "Close provider"};
    std::size_t nth = 0;
    for (bool failed = true; failed;) {
        // The run makes 22 calls.
        ASSERT_LT(nth, 23u);
        Renew();
        m_pReader->Add(MakeMock<tests::MockXpsDocument>().Get());
        m_pReader->Add(MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/s.fdseq").Get());
        m_pReader->Add(MakeMock<tests::MockFixedDocument>(m_calls, L"/d.fdoc").Get());
        m_pReader->Add(MakeMock<tests::MockFixedPage>(m_calls, L"/1.fpage", "<FixedPage/>").Get());
        m_pReader->Add(MakeMock<tests::MockUnknown>().Get());
        ASSERT_EQ(S_OK, m_pFilter->InitializeFilter(m_pCommunicator.Get(), m_pBag.Get(), m_pControl.Get()));
        m_calls.Clear();
        m_calls.FailNth(++nth, kCode);
        const HRESULT hr = Start();
        failed = m_calls.HasFailed();
        const std::string call = m_calls.FailedCall();
        SCOPED_TRACE(call);
        const bool isHarmless = !failed || std::ranges::find(harmless, call) != harmless.end();
        EXPECT_EQ(isHarmless ? S_OK : kCode, hr);
        EXPECT_EQ(isHarmless ? 0u : 1u, m_calls.Count("RequestShutdown 0x80030005"));
        EXPECT_EQ(1u, m_calls.Count("Close provider"));
        if (!isHarmless) {
            EXPECT_EQ("RequestShutdown 0x80030005", m_calls.Calls().back());
        }
        m_pFilter.Reset();
        EXPECT_EQ(2u, m_pReader->References());
    }
    EXPECT_EQ(23u, nth);
}

}  // namespace
}  // namespace base::xps::filterpipeline
