#include "base/xps/printschema/printticketprovider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "answers.h"
#include "base/io/printwritestreamtoistream.h"
#include "base/logging/exceptions.h"
#include "base/xml/xmlutility.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/privateprefix.h"
#include "callrecorder.h"
#include "domfaults.h"
#include "domtest.h"
#include "domtext.h"
#include "failingallocation.h"
#include "fakeplatformprovider.h"
#include "mockparts.h"
#include "mockstreams.h"
#include "platform/bstr.h"
#include "ticketmarkup.h"
#include "usertoken.h"

namespace {

using base::exception::HresultError;
using base::xml::LoadDomFromString;
using base::xps::printschema::MediaSizeData;
using base::xps::printschema::MediaSizeOption;
using base::xps::printschema::PrintTicketProvider;
using platform::Bstr;
using platform::ComPtr;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::Bytes;
using tests::CallRecorder;
using tests::DomText;
using tests::Feature;
using tests::kInjected;
using tests::MakeMock;
using tests::MockReadStream;
using tests::Ticket;

using Dom = ComPtr<IXMLDOMDocument2>;

constexpr HRESULT kNoConflict = static_cast<HRESULT>(S_PT_NO_CONFLICT);
constexpr HRESULT kConflictResolved = static_cast<HRESULT>(S_PT_CONFLICT_RESOLVED);
constexpr HRESULT kNoTicketPart = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
constexpr HRESULT kInvalidHandle = HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE);
constexpr auto kNoScope = static_cast<EPrintTicketScope>(3);
constexpr std::wstring_view NoTicket;
constexpr EPrintTicketScope kAllScopes[] = {kPTPageScope, kPTDocumentScope, kPTJobScope};

const std::wstring kBase = Ticket(Feature(L"psk:A", L"psk:base"));
const std::wstring kJobDelta = Ticket(Feature(L"psk:A", L"psk:job"));
const std::wstring kDocumentDelta = Ticket(Feature(L"psk:A", L"psk:document"));
const std::wstring kPageDelta = Ticket(Feature(L"psk:A", L"psk:page"));
const std::wstring kExtra = Ticket(Feature(L"psk:X", L"psk:extra"));
const std::wstring kNotATicket = L"<other><child/></other>";

std::string MergeCall(int scope, std::wstring_view base, std::wstring_view delta) {
    return "PTMergeAndValidatePrintTicket " + std::to_string(scope) + " " + Bytes(base) + " " + Bytes(delta);
}

// Says that it has its ticket and hands out none.
class DocumentWithNullTicket : public tests::MockTicketedPart<IFixedDocument> {
  public:
    using MockTicketedPart::MockTicketedPart;
    HRESULT STDMETHODCALLTYPE GetPrintTicket(IPartPrintTicket** ppTicket) override {
        *ppTicket = nullptr;
        return S_OK;
    }
};

// Says that it has its stream and hands out none.
class TicketWithNullStream : public tests::MockPrintTicket {
  public:
    using MockPrintTicket::MockPrintTicket;
    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) override {
        *ppStream = nullptr;
        return S_OK;
    }
};

// Notes under which token it is read.
class TokenNotingStream : public MockReadStream {
  public:
    using MockReadStream::MockReadStream;
    HRESULT STDMETHODCALLTYPE ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                        BOOL* pEndOfFile) override {
        tokens.push_back(tests::ThreadTokenId());
        return MockReadStream::ReadBytes(pBuffer, cbWanted, pcbRead, pEndOfFile);
    }

    std::vector<std::optional<LUID>> tokens;
};

// How many references an object has.
ULONG ReferencesOf(IUnknown* pObject) {
    pObject->AddRef();
    return pObject->Release();
}

bool LoadsAsynchronously(const Dom& dom) {
    VARIANT_BOOL isAsynchronous = VARIANT_TRUE;
    EXPECT_EQ(S_OK, dom->get_async(&isAsynchronous));
    return isAsynchronous != VARIANT_FALSE;
}

class PrintTicketProviderTest : public tests::DomTest {
  protected:
    void TearDown() override {
        EXPECT_FALSE(tests::ThreadTokenId().has_value());
        m_provider.reset();
        EXPECT_THAT(m_platform.openHandles, IsEmpty());
        EXPECT_THAT(m_platform.breaches, IsEmpty());
        EXPECT_THAT(m_platform.errorTexts, IsEmpty()) << "a text of the platform was not freed";
        DomTest::TearDown();
    }

    HRESULT OpenWith(std::wstring_view base) {
        const auto stream = MakeMock<MockReadStream>(m_calls, Bytes(base));
        return m_provider->Open(stream.Get(), Bstr(L"Printer").Get(), m_token.get());
    }
    void OpenBase() {
        ASSERT_EQ(S_OK, OpenWith(kBase));
        m_calls.Clear();
        m_platform.tokens.clear();
    }

    // With a ticket at every scope that nobody was handed.
    void OpenScopes() {
        OpenBase();
        ASSERT_EQ(kBase, DomText(Read(kPTPageScope).Get()));
    }

    // A part's ticket; null for no text.
    ComPtr<IPartPrintTicket> TicketPart(std::wstring_view text) {
        if (text.empty()) return {};
        return ComPtr<IPartPrintTicket>(
            MakeMock<tests::MockPrintTicket>(m_calls, L"/ticket", Bytes(text)).Get());
    }
    HRESULT SetJob(std::wstring_view ticket, IXMLDOMDocument2* pExtra = nullptr) {
        const auto part = MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/job", TicketPart(ticket));
        return m_provider->SetJobTicket(part.Get(), pExtra);
    }
    HRESULT SetDocument(std::wstring_view ticket, IXMLDOMDocument2* pExtra = nullptr) {
        const auto part = MakeMock<tests::MockFixedDocument>(m_calls, L"/document", TicketPart(ticket));
        return m_provider->SetDocumentTicket(part.Get(), pExtra);
    }
    HRESULT SetPage(std::wstring_view ticket, IXMLDOMDocument2* pExtra = nullptr) {
        const auto part = MakeMock<tests::MockFixedPage>(m_calls, L"/page", "", TicketPart(ticket));
        return m_provider->SetPageTicket(part.Get(), pExtra);
    }

    // The calls of the platform's provider, without those of the streams and parts.
    std::vector<std::string> PlatformCalls() const {
        std::vector<std::string> calls = m_calls.Calls();
        std::erase_if(calls, [](const std::string& call) { return !call.starts_with("PT"); });
        return calls;
    }

    Dom Get(EPrintTicketScope scope) {
        Dom ticket;
        EXPECT_EQ(S_OK, m_provider->GetTicket(scope, ticket.Put()));
        return ticket;
    }
    Dom Read(EPrintTicketScope scope) {
        Dom ticket;
        EXPECT_EQ(S_OK, m_provider->ReadTicket(scope, ticket.Put()));
        return ticket;
    }
    std::wstring TextAt(EPrintTicketScope scope) { return DomText(Get(scope).Get()); }
    HRESULT GetResult(EPrintTicketScope scope) {
        Dom ticket;
        const HRESULT hr = m_provider->GetTicket(scope, ticket.Put());
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(ticket));
        return hr;
    }

    void ExpectEveryCallUnderTheUsersToken() {
        for (const auto& token : m_platform.tokens) {
            EXPECT_TRUE(tests::SameToken(token, tests::TokenIdOf(m_token.get())));
        }
        EXPECT_FALSE(tests::ThreadTokenId().has_value());
    }

    CallRecorder m_calls;
    tests::FakePlatformProvider m_platform{m_calls};
    tests::OwnedHandle m_token = tests::MakeUserToken();
    std::unique_ptr<PrintTicketProvider> m_provider = std::make_unique<PrintTicketProvider>();
};

// Open and Close.

TEST_F(PrintTicketProviderTest, OpenOpensThePrinterAsTheUserAndLoadsTheBaseFromItsStart) {
    EXPECT_EQ(S_OK, OpenWith(kBase));
    EXPECT_THAT(PlatformCalls(), ElementsAre("PTOpenProvider Printer 1"));
    ExpectEveryCallUnderTheUsersToken();
    Dom base;
    EXPECT_EQ(S_OK, m_provider->GetBaseTicket(base.Put()));
    EXPECT_EQ(kBase, DomText(base.Get()));
}

TEST_F(PrintTicketProviderTest, OpenWithAnEmptyPrinterNameFailsAndOpensNothing) {
    const auto stream = MakeMock<MockReadStream>(m_calls, Bytes(kBase));
    EXPECT_EQ(E_INVALIDARG, m_provider->Open(stream.Get(), Bstr(L"").Get(), m_token.get()));
    EXPECT_EQ(E_INVALIDARG, m_provider->Open(stream.Get(), nullptr, m_token.get()));
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, OpenWithoutAStreamFailsAndOpensNothing) {
    EXPECT_EQ(E_POINTER, m_provider->Open(nullptr, Bstr(L"Printer").Get(), m_token.get()));
    EXPECT_EQ(E_POINTER, m_provider->Open(nullptr, nullptr, m_token.get()));
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, OpenUnderATokenThatCannotBeTakenMakesNoCall) {
    m_token.reset();
    const auto stream = MakeMock<MockReadStream>(m_calls, Bytes(kBase));
    const HANDLE noToken = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0xBEE0));
    EXPECT_EQ(kInvalidHandle, m_provider->Open(stream.Get(), Bstr(L"Printer").Get(), noToken));
    EXPECT_THAT(PlatformCalls(), IsEmpty());
    EXPECT_EQ(E_PENDING, GetResult(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, OpenWithoutATokenRunsAsTheProcess) {
    const auto stream = MakeMock<MockReadStream>(m_calls, Bytes(kBase));
    EXPECT_EQ(S_OK, m_provider->Open(stream.Get(), Bstr(L"Printer").Get(), nullptr));
    ASSERT_EQ(1u, m_platform.tokens.size());
    EXPECT_FALSE(m_platform.tokens[0].has_value());
}

TEST_F(PrintTicketProviderTest, ARefusalOfThePlatformToOpenIsReturned) {
    m_calls.Fail("PTOpenProvider Printer 1", kInjected);
    EXPECT_EQ(kInjected, OpenWith(kBase));
    EXPECT_EQ(E_PENDING, GetResult(kPTJobScope));
    EXPECT_EQ(S_OK, m_provider->Close());
    EXPECT_THAT(PlatformCalls(), ElementsAre("PTOpenProvider Printer 1"));
}

TEST_F(PrintTicketProviderTest, ABaseThatIsNotWellFormedFailsToOpen) {
    EXPECT_EQ(E_FAIL, OpenWith(L"<psf:PrintTicket>"));
    EXPECT_EQ(E_FAIL, OpenWith(L""));
    EXPECT_EQ(E_PENDING, GetResult(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, OpeningAgainClosesTheFirstAndForgetsItsTickets) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    m_calls.Clear();
    EXPECT_EQ(S_OK, OpenWith(kPageDelta));
    EXPECT_THAT(PlatformCalls(), ElementsAre("PTCloseProvider", "PTOpenProvider Printer 1"));
    EXPECT_EQ(kPageDelta, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, OpeningAgainWithBadArgumentsStillClosesTheFirst) {
    OpenBase();
    EXPECT_EQ(E_POINTER, m_provider->Open(nullptr, nullptr, m_token.get()));
    EXPECT_THAT(PlatformCalls(), ElementsAre("PTCloseProvider"));
}

TEST_F(PrintTicketProviderTest, APrinterThatCannotBeOpenedLeavesTheTickets) {
    OpenBase();
    m_calls.Fail("PTOpenProvider Printer 1", kInjected);
    EXPECT_EQ(kInjected, OpenWith(kPageDelta));
    EXPECT_EQ(kBase, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, ABaseThatCannotBeLoadedLeavesNoTicket) {
    OpenBase();
    EXPECT_EQ(E_FAIL, OpenWith(L"<psf:PrintTicket>"));
    EXPECT_EQ(E_PENDING, GetResult(kPTPageScope));
}

// A thread that keeps its user without a reason given is a failure all the same.
TEST_F(PrintTicketProviderTest, ATokenThatIsRefusedWithoutAReasonMakesNoCall) {
    OpenBase();
    const tests::RefusedToken refused(ERROR_SUCCESS);
    EXPECT_EQ(E_FAIL, SetJob(kJobDelta));
    Dom capabilities;
    EXPECT_EQ(E_FAIL, m_provider->GetPrintCapabilities(LoadDomFromString(kBase).Get(), capabilities.Put()));
    EXPECT_EQ(E_FAIL, OpenWith(kBase));
    EXPECT_THAT(PlatformCalls(), ElementsAre("PTCloseProvider"));
}

TEST_F(PrintTicketProviderTest, ATokenThatIsRefusedIsTheSystemsCode) {
    OpenBase();
    const tests::RefusedToken refused(ERROR_ACCESS_DENIED);
    EXPECT_EQ(E_ACCESSDENIED, SetJob(kJobDelta));
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

// A system may give a code for a reason.
TEST_F(PrintTicketProviderTest, AReasonThatIsAFailureCodeIsTakenAsItIs) {
    OpenBase();
    const tests::RefusedToken refused(static_cast<DWORD>(kInjected));
    EXPECT_EQ(kInjected, SetJob(kJobDelta));
}

TEST_F(PrintTicketProviderTest, OpenFailsCleanlyAtEveryCall) {
    for (std::size_t call = 1;; ++call) {
        ASSERT_LT(call, 1000u);
        m_calls.Clear();
        m_calls.FailNth(call, kInjected);
        const HRESULT hr = OpenWith(kBase);
        if (!m_calls.HasFailed()) {
            EXPECT_EQ(S_OK, hr);
            EXPECT_GT(call, 3u);
            break;
        }
        EXPECT_THAT(hr, AnyOf(kInjected, E_FAIL)) << m_calls.FailedCall();
        EXPECT_FALSE(tests::ThreadTokenId().has_value());
        EXPECT_EQ(E_PENDING, GetResult(kPTPageScope)) << m_calls.FailedCall();
        EXPECT_EQ(S_OK, m_provider->Close());
        EXPECT_THAT(m_platform.openHandles, IsEmpty());
    }
}

TEST_F(PrintTicketProviderTest, TheBaseIsReadAsTheUser) {
    const auto stream = MakeMock<TokenNotingStream>(m_calls, Bytes(kBase));
    ASSERT_EQ(S_OK, m_provider->Open(stream.Get(), Bstr(L"Printer").Get(), m_token.get()));
    EXPECT_FALSE(stream->tokens.empty());
    for (const auto& token : stream->tokens) {
        EXPECT_TRUE(tests::SameToken(token, tests::TokenIdOf(m_token.get())));
    }
}

TEST_F(PrintTicketProviderTest, OpeningAgainReleasesAllFourTickets) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    Dom base;
    ASSERT_EQ(S_OK, m_provider->GetBaseTicket(base.Put()));
    const std::vector<Dom> tickets = {base, Get(kPTJobScope), Get(kPTDocumentScope), Get(kPTPageScope)};
    base.Reset();
    for (const Dom& ticket : tickets) EXPECT_EQ(2u, ReferencesOf(ticket.Get()));
    ASSERT_EQ(S_OK, OpenWith(kPageDelta));
    for (const Dom& ticket : tickets) EXPECT_EQ(1u, ReferencesOf(ticket.Get()));
    for (const EPrintTicketScope scope : kAllScopes) EXPECT_EQ(kPageDelta, TextAt(scope));
}

TEST_F(PrintTicketProviderTest, NothingIsDoneOnThePlatformBeforeOpenForThereIsNoTokenYet) {
    const Dom source = LoadDomFromString(kBase);
    ASSERT_EQ(S_OK, m_provider->SetBaseTicket(source.Get()));
    EXPECT_EQ(kInvalidHandle, SetJob(kJobDelta));
    EXPECT_EQ(kInvalidHandle,
              m_provider->MergeTicket(kPTJobScope, LoadDomFromString(kJobDelta).Get(), nullptr));
    Dom capabilities;
    EXPECT_EQ(kInvalidHandle, m_provider->GetPrintCapabilities(source.Get(), capabilities.Put()));
    EXPECT_FALSE(capabilities);
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, EveryDocumentLoadsSynchronously) {
    OpenBase();
    m_platform.capabilities = Bytes(tests::Capabilities(L""));
    Dom base;
    ASSERT_EQ(S_OK, m_provider->GetBaseTicket(base.Put()));
    EXPECT_FALSE(LoadsAsynchronously(base));
    for (const EPrintTicketScope scope : kAllScopes) EXPECT_FALSE(LoadsAsynchronously(Get(scope))) << scope;
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    EXPECT_FALSE(LoadsAsynchronously(Get(kPTJobScope)));
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_FALSE(LoadsAsynchronously(Get(kPTPageScope)));
    Dom capabilities;
    ASSERT_EQ(S_OK, m_provider->GetPrintCapabilities(base.Get(), capabilities.Put()));
    EXPECT_FALSE(LoadsAsynchronously(capabilities));
}

TEST_F(PrintTicketProviderTest, CloseWithoutOpenSucceeds) {
    EXPECT_EQ(S_OK, m_provider->Close());
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, CloseReturnsThePlatformsResultAndClosesOnce) {
    OpenBase();
    m_calls.Fail("PTCloseProvider", kInjected);
    EXPECT_EQ(kInjected, m_provider->Close());
    EXPECT_EQ(S_OK, m_provider->Close());
    m_provider.reset();
    EXPECT_THAT(PlatformCalls(), ElementsAre("PTCloseProvider"));
}

TEST_F(PrintTicketProviderTest, TheDestructorCloses) {
    OpenBase();
    m_provider.reset();
    EXPECT_THAT(PlatformCalls(), ElementsAre("PTCloseProvider"));
}

TEST_F(PrintTicketProviderTest, CloseReleasesTheTicketsWithTheHandle) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    const Dom job = Get(kPTJobScope);
    ASSERT_EQ(S_OK, m_provider->Close());
    for (const EPrintTicketScope scope : kAllScopes) EXPECT_EQ(E_PENDING, GetResult(scope));
    Dom base;
    EXPECT_EQ(E_PENDING, m_provider->GetBaseTicket(base.Put()));
    EXPECT_EQ(E_PENDING, SetJob(kJobDelta));
    // Nobody else holds what was handed out.
    job.Get()->AddRef();
    EXPECT_EQ(1u, job.Get()->Release());
}

TEST_F(PrintTicketProviderTest, CloseWithoutAnOpenPrinterReleasesTheTicketsToo) {
    ASSERT_EQ(S_OK, m_provider->SetBaseTicket(LoadDomFromString(kBase).Get()));
    EXPECT_EQ(S_OK, m_provider->Close());
    EXPECT_EQ(E_PENDING, GetResult(kPTJobScope));
}

// The base ticket.

TEST_F(PrintTicketProviderTest, TheBaseIsMissingBeforeOpen) {
    IXMLDOMDocument2* pTicket = reinterpret_cast<IXMLDOMDocument2*>(this);
    EXPECT_EQ(E_PENDING, m_provider->GetBaseTicket(&pTicket));
    EXPECT_EQ(nullptr, pTicket);
    EXPECT_EQ(E_POINTER, m_provider->GetBaseTicket(nullptr));
}

TEST_F(PrintTicketProviderTest, TheBaseIsTakenFromADocumentAsACopy) {
    const Dom source = LoadDomFromString(kBase);
    EXPECT_EQ(S_OK, m_provider->SetBaseTicket(source.Get()));
    Dom base;
    ASSERT_EQ(S_OK, m_provider->GetBaseTicket(base.Put()));
    EXPECT_NE(base.Get(), source.Get());
    EXPECT_EQ(kBase, DomText(base.Get()));
}

TEST_F(PrintTicketProviderTest, TheBaseIsTakenFromAStreamFromItsStart) {
    ComPtr<IStream> stream;
    ASSERT_EQ(S_OK, CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()));
    const std::string bytes = Bytes(kBase);
    ASSERT_EQ(S_OK, stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr));
    EXPECT_EQ(S_OK, m_provider->SetBaseTicket(stream.Get()));
    EXPECT_EQ(kBase, TextAt(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, ABadSourceLeavesTheBaseAsItWas) {
    OpenBase();
    EXPECT_EQ(E_POINTER, m_provider->SetBaseTicket(nullptr));
    const auto noStream = MakeMock<tests::MockUnknown>();
    EXPECT_EQ(E_NOINTERFACE, m_provider->SetBaseTicket(noStream.Get()));
    ComPtr<IStream> empty;
    ASSERT_EQ(S_OK, CreateStreamOnHGlobal(nullptr, TRUE, empty.Put()));
    EXPECT_EQ(E_FAIL, m_provider->SetBaseTicket(empty.Get()));
    EXPECT_EQ(kBase, TextAt(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, AStreamThatCannotBeRewoundIsNoBase) {
    OpenBase();
    const auto output = MakeMock<tests::MockWriteStream>(m_calls);
    const ComPtr<IStream> forwardOnly = base::io::CreatePrintWriteStreamToIStream(output.Get());
    EXPECT_EQ(E_NOTIMPL, m_provider->SetBaseTicket(forwardOnly.Get()));
    EXPECT_EQ(kBase, TextAt(kPTJobScope));
}

// Reading and deriving.

TEST_F(PrintTicketProviderTest, EveryScopeIsPendingWithoutABase) {
    for (const EPrintTicketScope scope : kAllScopes) {
        EXPECT_EQ(E_PENDING, GetResult(scope));
        EXPECT_EQ(E_PENDING, m_provider->MergeTicket(scope, nullptr, nullptr));
    }
    EXPECT_EQ(E_PENDING, SetJob(kJobDelta));
    EXPECT_EQ(E_PENDING, SetJob(NoTicket));
}

TEST_F(PrintTicketProviderTest, EveryScopeStartsAsACopyOfTheBase) {
    OpenBase();
    Dom base;
    ASSERT_EQ(S_OK, m_provider->GetBaseTicket(base.Put()));
    std::vector<Dom> tickets = {base};
    for (const EPrintTicketScope scope : kAllScopes) {
        const Dom ticket = Get(scope);
        EXPECT_EQ(kBase, DomText(ticket.Get()));
        for (const Dom& other : tickets) EXPECT_NE(ticket.Get(), other.Get());
        tickets.push_back(ticket);
    }
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, GetTicketForThePageBeforeAnyPagePartYieldsACopyOfTheDocumentTicket) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    EXPECT_EQ(kDocumentDelta, TextAt(kPTPageScope));
    EXPECT_NE(Get(kPTPageScope).Get(), Get(kPTDocumentScope).Get());
}

TEST_F(PrintTicketProviderTest, GetTicketHandsOutTheSameDocumentEachTime) {
    OpenBase();
    for (const EPrintTicketScope scope : kAllScopes) EXPECT_EQ(Get(scope).Get(), Get(scope).Get());
}

TEST_F(PrintTicketProviderTest, GetTicketRefusesOtherScopesAndANullPointer) {
    IXMLDOMDocument2* pTicket = reinterpret_cast<IXMLDOMDocument2*>(this);
    EXPECT_EQ(E_INVALIDARG, m_provider->GetTicket(kNoScope, &pTicket));
    EXPECT_EQ(nullptr, pTicket);
    OpenBase();
    EXPECT_EQ(E_INVALIDARG, GetResult(kNoScope));
    EXPECT_EQ(E_POINTER, m_provider->GetTicket(kPTPageScope, nullptr));
}

// MergeTicket.

TEST_F(PrintTicketProviderTest, MergingAtScope3FailsAndChangesNothing) {
    OpenBase();
    const Dom delta = LoadDomFromString(kJobDelta);
    const Dom job = Get(kPTJobScope);
    EXPECT_EQ(E_INVALIDARG, m_provider->MergeTicket(kNoScope, delta.Get(), nullptr));
    EXPECT_EQ(E_INVALIDARG, m_provider->MergeTicket(kNoScope, nullptr, nullptr));
    EXPECT_EQ(job.Get(), Get(kPTJobScope).Get());
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, EachScopeIsMergedOverTheNextWiderOne) {
    OpenBase();
    EXPECT_EQ(S_OK, m_provider->MergeTicket(kPTJobScope, LoadDomFromString(kJobDelta).Get(), nullptr));
    EXPECT_EQ(S_OK,
              m_provider->MergeTicket(kPTDocumentScope, LoadDomFromString(kDocumentDelta).Get(), nullptr));
    EXPECT_EQ(S_OK, m_provider->MergeTicket(kPTPageScope, LoadDomFromString(kPageDelta).Get(), nullptr));
    EXPECT_THAT(PlatformCalls(),
                ElementsAre(MergeCall(2, kBase, kJobDelta), MergeCall(1, kJobDelta, kDocumentDelta),
                            MergeCall(0, kDocumentDelta, kPageDelta)));
    ExpectEveryCallUnderTheUsersToken();
    EXPECT_EQ(kJobDelta, TextAt(kPTJobScope));
    EXPECT_EQ(kDocumentDelta, TextAt(kPTDocumentScope));
    EXPECT_EQ(kPageDelta, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, MergingAtAScopeForgetsTheNarrowerOnes) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    ASSERT_EQ(S_OK, SetPage(kPageDelta));
    EXPECT_EQ(S_OK, m_provider->MergeTicket(kPTDocumentScope, nullptr, nullptr));
    EXPECT_EQ(kJobDelta, TextAt(kPTPageScope));
    EXPECT_EQ(S_OK, m_provider->MergeTicket(kPTJobScope, nullptr, nullptr));
    EXPECT_EQ(kBase, TextAt(kPTJobScope));
    EXPECT_EQ(kBase, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, MergingWithoutADeltaLeavesTheExtraTicketOut) {
    OpenBase();
    const Dom extra = LoadDomFromString(kExtra);
    EXPECT_EQ(S_OK, m_provider->MergeTicket(kPTJobScope, nullptr, extra.Get()));
    EXPECT_EQ(kBase, TextAt(kPTJobScope));
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, EverySuccessCodeOfThePlatformIsASuccess) {
    OpenBase();
    for (const HRESULT success : {kNoConflict, kConflictResolved, S_OK}) {
        m_platform.mergeResult = success;
        EXPECT_EQ(S_OK, m_provider->MergeTicket(kPTJobScope, LoadDomFromString(kJobDelta).Get(), nullptr));
        EXPECT_EQ(kJobDelta, TextAt(kPTJobScope));
        EXPECT_EQ(S_OK, SetJob(kPageDelta));
        EXPECT_EQ(kPageDelta, TextAt(kPTJobScope));
    }
}

TEST_F(PrintTicketProviderTest, AMergeThatThePlatformRefusesLeavesTheCopyOfTheParent) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    m_platform.errorText = L"Delta ticket: 100% wrong \u6F22";
    m_platform.mergeResult = static_cast<HRESULT>(0x80040005L);
    EXPECT_EQ(static_cast<HRESULT>(0x80040005L),
              m_provider->MergeTicket(kPTPageScope, LoadDomFromString(kPageDelta).Get(), nullptr));
    EXPECT_EQ(kJobDelta, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, ARefusedMergeWithoutATextFailsAllTheSame) {
    OpenBase();
    m_platform.mergeResult = kInjected;
    EXPECT_EQ(kInjected, SetJob(kJobDelta));
    EXPECT_EQ(kBase, TextAt(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, AResultThatIsNotWellFormedLeavesTheCopyOfTheParent) {
    OpenBase();
    for (const std::string_view result : {"", "<psf:PrintTicket>", "<a/><b/>"}) {
        m_platform.merge = [&](const auto&) { return std::string(result); };
        EXPECT_EQ(E_FAIL,
                  m_provider->MergeTicket(kPTPageScope, LoadDomFromString(kPageDelta).Get(), nullptr));
        EXPECT_EQ(kBase, TextAt(kPTPageScope));
    }
}

TEST_F(PrintTicketProviderTest, TheDeltaAndTheExtraTicketAreNotChanged) {
    OpenBase();
    const Dom delta = LoadDomFromString(kJobDelta);
    const Dom extra = LoadDomFromString(kExtra);
    EXPECT_EQ(S_OK, m_provider->MergeTicket(kPTJobScope, delta.Get(), extra.Get()));
    EXPECT_EQ(kJobDelta, DomText(delta.Get()));
    EXPECT_EQ(kExtra, DomText(extra.Get()));
}

// What validation dropped.

TEST_F(PrintTicketProviderTest, APrivateFeatureThatValidationDropsComesBackAndValidatedValuesWin) {
    OpenBase();
    const std::wstring declaration = L" xmlns:krk=\"http://schemas.example.com/ptpc/2008/11\"";
    const std::wstring secret = Feature(L"krk:Secret", L"krk:On");
    const std::wstring size =
        L"<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:CustomMediaSize\">"
        L"<psf:ScoredProperty name=\"psk:MediaSizeWidth\"><psf:Value>";
    const std::wstring sizeEnd = L"</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>";
    m_platform.merge = [&](const auto&) { return Bytes(Ticket(size + L"100" + sizeEnd)); };

    EXPECT_EQ(S_OK, SetJob(Ticket(secret + size + L"999" + sizeEnd, declaration)));

    const std::wstring text = TextAt(kPTJobScope);
    EXPECT_THAT(text, testing::HasSubstr(L"<psf:Value>100</psf:Value>"));
    EXPECT_THAT(text, testing::Not(testing::HasSubstr(L"999")));
    EXPECT_THAT(text, testing::HasSubstr(declaration));
    EXPECT_THAT(text, testing::HasSubstr(size + L"100" + sizeEnd + secret));
}

TEST_F(PrintTicketProviderTest, AnOptionThatValidationReplacedStandsBeforeTheOneThatWasAskedFor) {
    OpenBase();
    m_platform.merge = [](const auto&) { return Bytes(Ticket(Feature(L"psk:A", L"psk:validated"))); };
    EXPECT_EQ(S_OK, SetJob(kJobDelta));
    EXPECT_EQ(Ticket(L"<psf:Feature name=\"psk:A\"><psf:Option name=\"psk:validated\"/>"
                     L"<psf:Option name=\"psk:job\"/></psf:Feature>"),
              TextAt(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, WhatWasPutBackIsInTheNextMergesBase) {
    OpenBase();
    const std::wstring validated = Feature(L"psk:A", L"psk:job");
    const std::wstring dropped = Feature(L"psk:Dropped", L"psk:On");
    m_platform.merge = [&](const auto&) { return Bytes(Ticket(validated)); };
    ASSERT_EQ(S_OK, SetJob(Ticket(dropped + validated)));
    m_calls.Clear();
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    EXPECT_THAT(PlatformCalls(), ElementsAre(MergeCall(1, Ticket(validated + dropped), kDocumentDelta)));
}

TEST_F(PrintTicketProviderTest, TheExtraTicketIsMergedAfterTheDelta) {
    OpenBase();
    m_platform.merge = [](const auto&) { return Bytes(kBase); };
    const Dom extra = LoadDomFromString(kExtra);
    const std::wstring delta = Ticket(Feature(L"psk:B", L"psk:delta"));
    EXPECT_EQ(S_OK, SetJob(delta, extra.Get()));
    EXPECT_EQ(Ticket(Feature(L"psk:A", L"psk:base") + Feature(L"psk:B", L"psk:delta") +
                     Feature(L"psk:X", L"psk:extra")),
              TextAt(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, AResultUnderAnotherRootThrowsAndTheScopeKeepsItsTicket) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    const Dom job = Get(kPTJobScope);
    m_platform.merge = [](const auto&) { return Bytes(kNotATicket); };
    EXPECT_THROW(static_cast<void>(SetJob(kPageDelta)), HresultError);
    EXPECT_EQ(job.Get(), Get(kPTJobScope).Get());
    EXPECT_EQ(kJobDelta, TextAt(kPTJobScope));
}

// Parts.

TEST_F(PrintTicketProviderTest, PartsAreMergedInTheOrderOfTheDocument) {
    OpenBase();
    EXPECT_EQ(S_OK, SetJob(kJobDelta));
    EXPECT_EQ(S_OK, SetDocument(kDocumentDelta));
    EXPECT_EQ(S_OK, SetPage(kPageDelta));
    EXPECT_THAT(PlatformCalls(),
                ElementsAre(MergeCall(2, kBase, kJobDelta), MergeCall(1, kJobDelta, kDocumentDelta),
                            MergeCall(0, kDocumentDelta, kPageDelta)));
    ExpectEveryCallUnderTheUsersToken();
}

TEST_F(PrintTicketProviderTest, ASecondPageStartsFromTheDocumentAndASecondDocumentFromTheJob) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    ASSERT_EQ(S_OK, SetPage(kPageDelta));
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_EQ(kDocumentDelta, TextAt(kPTPageScope));
    ASSERT_EQ(S_OK, SetDocument(NoTicket));
    EXPECT_EQ(kJobDelta, TextAt(kPTDocumentScope));
    EXPECT_EQ(kJobDelta, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, APartWithATicketLeavesTheNarrowerTicketsAsTheyAre) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    const Dom page = Get(kPTPageScope);
    ASSERT_EQ(S_OK, SetJob(kPageDelta));
    EXPECT_EQ(kDocumentDelta, TextAt(kPTDocumentScope));
    EXPECT_EQ(page.Get(), Get(kPTPageScope).Get());
}

TEST_F(PrintTicketProviderTest, APartWithATicketNeedsTheWiderTicket) {
    OpenBase();
    EXPECT_EQ(E_PENDING, SetDocument(kDocumentDelta));
    EXPECT_EQ(E_PENDING, SetPage(kPageDelta));
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    EXPECT_EQ(E_PENDING, SetPage(kPageDelta));
    EXPECT_EQ(1u, PlatformCalls().size());
}

TEST_F(PrintTicketProviderTest, APagePartWithoutATicketYieldsTheDocumentTicketWithTheExtraTicketMergedIn) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(NoTicket));
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    m_calls.Clear();
    EXPECT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_EQ(kDocumentDelta, TextAt(kPTPageScope));
    const Dom extra = LoadDomFromString(kExtra);
    EXPECT_EQ(S_OK, SetPage(NoTicket, extra.Get()));
    EXPECT_EQ(Ticket(Feature(L"psk:A", L"psk:document") + Feature(L"psk:X", L"psk:extra")),
              TextAt(kPTPageScope));
    EXPECT_EQ(kDocumentDelta, TextAt(kPTDocumentScope));
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, ASuccessWithoutATicketPartIsAPartWithoutATicket) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    const Dom extra = LoadDomFromString(kExtra);
    const auto part = MakeMock<DocumentWithNullTicket>(m_calls, L"/document");
    EXPECT_EQ(S_OK, m_provider->SetDocumentTicket(part.Get(), extra.Get()));
    EXPECT_EQ(Ticket(Feature(L"psk:A", L"psk:job") + Feature(L"psk:X", L"psk:extra")),
              TextAt(kPTDocumentScope));
}

TEST_F(PrintTicketProviderTest, AnyOtherFailureOfThePartIsReturnedUnchanged) {
    OpenBase();
    const Dom job = Get(kPTJobScope);
    m_calls.Fail("GetPrintTicket /job", E_ACCESSDENIED);
    EXPECT_EQ(E_ACCESSDENIED, SetJob(kJobDelta));
    m_calls.Fail("GetPrintTicket /document", RPC_E_DISCONNECTED);
    EXPECT_EQ(RPC_E_DISCONNECTED, SetDocument(kDocumentDelta));
    m_calls.Fail("GetPrintTicket /page", E_FAIL);
    EXPECT_EQ(E_FAIL, SetPage(kPageDelta));
    m_calls.Fail("GetStream", STG_E_ACCESSDENIED);
    EXPECT_EQ(STG_E_ACCESSDENIED, SetJob(kJobDelta));
    EXPECT_EQ(job.Get(), Get(kPTJobScope).Get());
}

TEST_F(PrintTicketProviderTest, OnlyAPartCanBeWithoutATicketNotTheTicketItself) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    const Dom job = Get(kPTJobScope);
    m_calls.Fail("GetStream", kNoTicketPart);
    EXPECT_EQ(kNoTicketPart, SetJob(kPageDelta));
    EXPECT_EQ(job.Get(), Get(kPTJobScope).Get());
    EXPECT_EQ(kJobDelta, TextAt(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, ANullPartIsRefused) {
    OpenBase();
    EXPECT_EQ(E_POINTER, m_provider->SetJobTicket(nullptr, nullptr));
    EXPECT_EQ(E_POINTER, m_provider->SetDocumentTicket(nullptr, nullptr));
    EXPECT_EQ(E_POINTER, m_provider->SetPageTicket(nullptr, nullptr));
}

TEST_F(PrintTicketProviderTest, APartWhoseTicketIsNotWellFormedFailsBeforeThePlatformIsCalled) {
    OpenBase();
    const Dom job = Get(kPTJobScope);
    EXPECT_EQ(E_FAIL, SetJob(L"<psf:PrintTicket>"));
    EXPECT_EQ(E_FAIL, SetJob(L"no markup"));
    EXPECT_EQ(job.Get(), Get(kPTJobScope).Get());
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, APartWhoseStreamCannotBeWrappedIsOutOfMemory) {
    OpenBase();
    const auto ticket = MakeMock<TicketWithNullStream>(m_calls, L"/ticket", "");
    const auto part =
        MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/job", ComPtr<IPartPrintTicket>(ticket.Get()));
    EXPECT_EQ(E_OUTOFMEMORY, m_provider->SetJobTicket(part.Get(), nullptr));
    EXPECT_THAT(PlatformCalls(), IsEmpty());
}

TEST_F(PrintTicketProviderTest, AnExtraTicketThatCannotBeMergedThrowsAndTheScopeIsTheCopyOfItsParent) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    const Dom extra = LoadDomFromString(kNotATicket);
    EXPECT_THROW(static_cast<void>(SetPage(NoTicket, extra.Get())), HresultError);
    EXPECT_EQ(kJobDelta, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, AMergeUnderATokenThatIsGoneMakesNoCall) {
    OpenBase();
    m_token.reset();
    EXPECT_EQ(kInvalidHandle, SetJob(kJobDelta));
    Dom capabilities;
    EXPECT_EQ(kInvalidHandle,
              m_provider->GetPrintCapabilities(LoadDomFromString(kBase).Get(), capabilities.Put()));
    EXPECT_FALSE(capabilities);
    EXPECT_THAT(PlatformCalls(), IsEmpty());
    EXPECT_EQ(kBase, TextAt(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, SettingAPagesTicketFailsCleanlyAtEveryCall) {
    OpenBase();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    const Dom before = Get(kPTPageScope);
    for (std::size_t call = 1;; ++call) {
        ASSERT_LT(call, 1000u);
        m_calls.Clear();
        m_calls.FailNth(call, kInjected);
        const HRESULT hr = SetPage(kPageDelta);
        if (!m_calls.HasFailed()) {
            EXPECT_EQ(S_OK, hr);
            EXPECT_GT(call, 5u);
            break;
        }
        EXPECT_THAT(hr, AnyOf(kInjected, E_FAIL)) << m_calls.FailedCall();
        EXPECT_FALSE(tests::ThreadTokenId().has_value());
        EXPECT_EQ(before.Get(), Get(kPTPageScope).Get()) << m_calls.FailedCall();
        EXPECT_EQ(kDocumentDelta, DomText(before.Get()));
    }
    EXPECT_EQ(kPageDelta, TextAt(kPTPageScope));
}

// Capabilities.

const std::wstring kSomeCapabilities = tests::Capabilities(Feature(L"psk:A", L"psk:one"));

TEST_F(PrintTicketProviderTest, CapabilitiesAreWrittenIntoAFreshDocumentUnderTheUsersToken) {
    OpenBase();
    m_platform.capabilities = Bytes(kSomeCapabilities);
    const Dom ticket = LoadDomFromString(kPageDelta);
    Dom capabilities;
    EXPECT_EQ(S_OK, m_provider->GetPrintCapabilities(ticket.Get(), capabilities.Put()));
    EXPECT_EQ(kSomeCapabilities, DomText(capabilities.Get()));
    EXPECT_THAT(PlatformCalls(), ElementsAre("PTGetPrintCapabilities " + Bytes(kPageDelta)));
    ExpectEveryCallUnderTheUsersToken();
    EXPECT_EQ(kPageDelta, DomText(ticket.Get()));
}

TEST_F(PrintTicketProviderTest, CapabilitiesCanBeAskedForTwice) {
    OpenBase();
    m_platform.capabilities = Bytes(kSomeCapabilities);
    const Dom ticket = LoadDomFromString(kPageDelta);
    for (int time = 0; time < 2; ++time) {
        Dom capabilities;
        EXPECT_EQ(S_OK, m_provider->GetPrintCapabilities(ticket.Get(), capabilities.Put()));
        EXPECT_EQ(kSomeCapabilities, DomText(capabilities.Get()));
    }
}

TEST_F(PrintTicketProviderTest, CapabilitiesNeedATicketAndAPlace) {
    OpenBase();
    IXMLDOMDocument2* pCapabilities = reinterpret_cast<IXMLDOMDocument2*>(this);
    EXPECT_EQ(E_POINTER, m_provider->GetPrintCapabilities(nullptr, &pCapabilities));
    EXPECT_EQ(nullptr, pCapabilities);
    EXPECT_EQ(E_POINTER, m_provider->GetPrintCapabilities(LoadDomFromString(kBase).Get(), nullptr));
}

TEST_F(PrintTicketProviderTest, CapabilitiesThatThePlatformRefusesAreItsFailure) {
    OpenBase();
    m_platform.errorText = L"no";
    m_calls.FailNth(1, kInjected);
    Dom capabilities;
    EXPECT_EQ(kInjected,
              m_provider->GetPrintCapabilities(LoadDomFromString(kBase).Get(), capabilities.Put()));
    EXPECT_FALSE(capabilities);
}

TEST_F(PrintTicketProviderTest, CapabilitiesOfWhichNothingIsWrittenFail) {
    OpenBase();
    Dom capabilities;
    EXPECT_EQ(E_FAIL, m_provider->GetPrintCapabilities(LoadDomFromString(kBase).Get(), capabilities.Put()));
    EXPECT_FALSE(capabilities);
}

// The failure itself is what counts.
TEST_F(PrintTicketProviderTest, WithoutMemoryForThemTheTicketsOfAFailureAreNotKept) {
    OpenBase();
    m_platform.errorText = L"not today";
    for (const bool isKept : {true, false}) {
        std::optional<tests::FailingStreamMemory> noMemory;
        if (!isKept) noMemory.emplace(E_OUTOFMEMORY);
        m_calls.FailNth(1, kInjected);
        Dom capabilities;
        EXPECT_EQ(kInjected,
                  m_provider->GetPrintCapabilities(LoadDomFromString(kBase).Get(), capabilities.Put()));
        EXPECT_EQ(isKept, !m_provider->LastFailure().message.empty());
    }
}

TEST_F(PrintTicketProviderTest, ATicketIsReadOfNoOtherScopeThanTheThree) {
    OpenBase();
    Dom ticket;
    EXPECT_EQ(E_INVALIDARG, m_provider->ReadTicket(kNoScope, ticket.Put()));
    EXPECT_FALSE(ticket);
}

// A document may say that it has a root and give none.
bool RootLies(const char* name, const void*) { return std::string_view(name) == "get_documentElement"; }

TEST_F(PrintTicketProviderTest, CapabilitiesWhoseRootCannotBeHadFail) {
    OpenBase();
    m_platform.capabilities = Bytes(kBase);
    const Dom ticket = LoadDomFromString(kBase);
    const tests::DomFaults faults(&RootLies, S_OK);
    Dom capabilities;
    EXPECT_EQ(E_FAIL, m_provider->GetPrintCapabilities(ticket.Get(), capabilities.Put()));
    EXPECT_FALSE(capabilities);
}

TEST_F(PrintTicketProviderTest, WhatThePlatformSaysOfAFailureIsKeptWithTheTickets) {
    OpenBase();
    EXPECT_EQ("", m_provider->LastFailure().message);
    m_platform.errorText = L"not today";
    m_calls.Fail(MergeCall(kPTJobScope, kBase, kJobDelta), kInjected);
    EXPECT_EQ(kInjected, SetJob(kJobDelta));
    const auto trimmed = [](std::wstring text) { return text.substr(0, text.find_last_not_of(L"\r\n") + 1); };
    EXPECT_EQ("PTMergeAndValidatePrintTicket failed with message: not today\n",
              m_provider->LastFailure().message);
    EXPECT_EQ(kBase, trimmed(m_provider->LastFailure().parent));
    EXPECT_EQ(kJobDelta, trimmed(m_provider->LastFailure().delta));

    m_calls.FailNth(1, kInjected);
    Dom capabilities;
    EXPECT_EQ(kInjected,
              m_provider->GetPrintCapabilities(LoadDomFromString(kPageDelta).Get(), capabilities.Put()));
    EXPECT_EQ("PTGetPrintCapabilities failed with message: not today\n", m_provider->LastFailure().message);
    EXPECT_EQ(L"", m_provider->LastFailure().parent);
    EXPECT_EQ(kPageDelta, trimmed(m_provider->LastFailure().delta));
}

// What is done once for pages that are alike.

TEST_F(PrintTicketProviderTest, PagesWithoutATicketShareOneUnderTheSameDocumentAndExtraTicket) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetJob(kJobDelta));
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    const Dom extra = LoadDomFromString(kExtra);
    ASSERT_EQ(S_OK, SetPage(NoTicket, extra.Get()));
    const std::uint64_t version = m_provider->TicketVersion(kPTPageScope);
    EXPECT_NE(0u, version);
    const Dom first = Read(kPTPageScope);
    ASSERT_EQ(S_OK, SetPage(NoTicket, extra.Get()));
    EXPECT_EQ(first.Get(), Read(kPTPageScope).Get());
    EXPECT_EQ(version, m_provider->TicketVersion(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, AnotherExtraTicketMakesAnotherPageTicket) {
    OpenScopes();
    const Dom extra = LoadDomFromString(kExtra);
    ASSERT_EQ(S_OK, SetPage(NoTicket, extra.Get()));
    const std::uint64_t version = m_provider->TicketVersion(kPTPageScope);
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_NE(version, m_provider->TicketVersion(kPTPageScope));
    EXPECT_EQ(kBase, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, AWiderTicketThatChangesMakesAnotherPageTicket) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    ASSERT_EQ(S_OK, SetDocument(kPageDelta));
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_EQ(kPageDelta, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, ATicketThatReadingDerivesIsSharedToo) {
    OpenScopes();
    static_cast<void>(Read(kPTPageScope));
    EXPECT_NE(0u, m_provider->TicketVersion(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, ATicketThatWasHandedOutAndChangedIsNotShared) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    const Dom lent = Get(kPTPageScope);
    EXPECT_EQ(0u, m_provider->TicketVersion(kPTPageScope));
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    ASSERT_EQ(S_OK, lent->loadXML(Bstr(kPageDelta).Get(), &isLoaded));
    EXPECT_EQ(kPageDelta, TextAt(kPTPageScope));
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_EQ(kBase, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, PagesUnderATicketThatWasHandedOutAndChangedFollowIt) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    ASSERT_EQ(S_OK, Get(kPTDocumentScope)->loadXML(Bstr(kPageDelta).Get(), &isLoaded));
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_EQ(kPageDelta, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, TicketsUnderABaseThatWasHandedOutAndChangedFollowIt) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetJob(NoTicket));
    Dom base;
    ASSERT_EQ(S_OK, m_provider->GetBaseTicket(base.Put()));
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    ASSERT_EQ(S_OK, base->loadXML(Bstr(kPageDelta).Get(), &isLoaded));
    ASSERT_EQ(S_OK, SetJob(NoTicket));
    EXPECT_EQ(kPageDelta, TextAt(kPTJobScope));
}

TEST_F(PrintTicketProviderTest, APageLikeTheOneBeforeIsValidatedAndKeepsItsTicket) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetDocument(kDocumentDelta));
    const Dom extra = LoadDomFromString(kExtra);
    ASSERT_EQ(S_OK, SetPage(kPageDelta, extra.Get()));
    const Dom first = Read(kPTPageScope);
    const std::uint64_t version = m_provider->TicketVersion(kPTPageScope);
    m_calls.Clear();
    ASSERT_EQ(S_OK, SetPage(kPageDelta, extra.Get()));
    EXPECT_THAT(PlatformCalls(), ElementsAre(MergeCall(kPTPageScope, kDocumentDelta, kPageDelta)));
    EXPECT_EQ(first.Get(), Read(kPTPageScope).Get());
    EXPECT_EQ(version, m_provider->TicketVersion(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, APageOfWhichThePlatformMakesSomethingElseGetsAnotherTicket) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetPage(kPageDelta));
    m_platform.merge = [](const std::string&) { return Bytes(kJobDelta); };
    ASSERT_EQ(S_OK, SetPage(kPageDelta));
    EXPECT_EQ(
        Ticket(Feature(L"psk:A", L"psk:job").substr(0, std::wstring(L"<psf:Feature name=\"psk:A\">").size()) +
               L"<psf:Option name=\"psk:job\"/><psf:Option name=\"psk:page\"/></psf:Feature>"),
        TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, APageWithATicketBetweenTwoWithoutLeavesNothingBehind) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    ASSERT_EQ(S_OK, SetPage(kPageDelta));
    EXPECT_EQ(kPageDelta, TextAt(kPTPageScope));
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_EQ(kBase, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, AChangedTicketOfAPageWithATicketIsMadeAnew) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetPage(kPageDelta));
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    ASSERT_EQ(S_OK, Get(kPTPageScope)->loadXML(Bstr(kJobDelta).Get(), &isLoaded));
    ASSERT_EQ(S_OK, SetPage(kPageDelta));
    EXPECT_EQ(kPageDelta, TextAt(kPTPageScope));
}

TEST_F(PrintTicketProviderTest, WhatWasKeptOfATicketGoesWithIt) {
    OpenScopes();
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_EQ(nullptr, m_provider->KeptMedia(kPTPageScope));
    m_provider->KeepMedia(kPTPageScope, {L"krk:", {1, 2}, {}});
    ASSERT_NE(nullptr, m_provider->KeptMedia(kPTPageScope));
    EXPECT_EQ(2, m_provider->KeptMedia(kPTPageScope)->size.height);
    ASSERT_EQ(S_OK, SetPage(kPageDelta));
    EXPECT_EQ(nullptr, m_provider->KeptMedia(kPTPageScope));
    EXPECT_NE(nullptr, Get(kPTPageScope).Get());
    m_provider->KeepMedia(kPTPageScope, {L"krk:", {1, 2}, {}});
    EXPECT_EQ(nullptr, m_provider->KeptMedia(kPTPageScope));
    EXPECT_EQ(0u, m_provider->TicketVersion(kNoScope));
}

// What was derived for a reader was not made of any part.
TEST_F(PrintTicketProviderTest, ATicketThatWasDerivedForAReaderIsMadeAnewForAPart) {
    OpenBase();
    {
        Dom ticket;
        ASSERT_EQ(S_OK, m_provider->ReadTicket(kPTPageScope, ticket.Put()));
    }
    const std::uint64_t derived = m_provider->TicketVersion(kPTPageScope);
    EXPECT_NE(0u, derived);
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_NE(derived, m_provider->TicketVersion(kPTPageScope));
    EXPECT_EQ(kBase, TextAt(kPTPageScope));
}

// Whoever has the document's ticket may have changed it.
TEST_F(PrintTicketProviderTest, ATicketBelowOneThatWasLentIsMadeAnewEachTime) {
    OpenBase();
    const Dom lent = Get(kPTDocumentScope);
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    const std::uint64_t first = m_provider->TicketVersion(kPTPageScope);
    EXPECT_NE(0u, first);
    ASSERT_EQ(S_OK, SetPage(NoTicket));
    EXPECT_NE(first, m_provider->TicketVersion(kPTPageScope));
}

// A ticket that was read with one private prefix may say something else with another.
TEST_F(PrintTicketProviderTest, WhatWasKeptOfATicketHoldsForThePrefixThatItWasReadWith) {
    OpenScopes();
    const auto keptPrefix = [&](std::wstring_view prefix) {
        base::xps::printschema::SetPrivatePrefix(prefix);
        const MediaSizeOption chosen = MediaSizeData::SelectPrintableMediaSize(
            *m_provider, {{1, 1}, {1000000, 1000000}}, base::xps::printschema::Scope::Job);
        EXPECT_EQ(L"ISOA4", chosen.keyword);
        const auto* const pKept = m_provider->KeptMedia(kPTJobScope);
        return pKept == nullptr ? std::wstring(L"nothing") : pKept->privatePrefix;
    };
    const std::wstring first = keptPrefix(L"krk");
    EXPECT_NE(L"nothing", first);
    EXPECT_EQ(first, keptPrefix(L"krk"));
    EXPECT_NE(first, keptPrefix(L"other"));
    base::xps::printschema::SetPrivatePrefix({});
}

}  // namespace
