// How often the DOM is called for a page whose ticket differs from that of the page before.

#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include "base/xps/printschema/inputbindata.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/pageorientationdata.h"
#include "base/xps/printschema/printablemediasizedata.h"
#include "base/xps/printschema/printticketprovider.h"
#include "base/xps/printschema/scalingdata.h"
#include "domfaults.h"
#include "fakeplatformprovider.h"
#include "handlertest.h"
#include "mockparts.h"
#include "ticketmarkup.h"

namespace {

using namespace base::xps::printschema;
using platform::ComPtr;
using tests::Bytes;
using tests::Dom;
using tests::DomCall;
using tests::DomFaults;
using tests::Feature;
using tests::Integer;
using tests::MakeMock;
using tests::Named;
using tests::ScoredProperty;
using tests::Ticket;

constexpr std::wstring_view kPrivateDeclaration = L" xmlns:krk=\"urn:private\"";

std::wstring Numbers(std::initializer_list<const wchar_t*> names) {
    std::wstring properties;
    for (const wchar_t* name : names)
        properties += Named(L"Property", L"krk:" + std::wstring(name), Integer(1000));
    return properties;
}

// What the platform says: the settings that it knows.
std::wstring Validated(std::wstring_view color) {
    return Ticket(
        Feature(L"psk:PageMediaSize", L"psk:ISOA4",
                ScoredProperty(L"psk:MediaSizeHeight", Integer(297000)) +
                    ScoredProperty(L"psk:MediaSizeWidth", Integer(210000))) +
        Feature(L"psk:JobInputBin", L"psk:AutoSelect",
                ScoredProperty(L"psk:FeedDirection", tests::Value(L"QName", L"psk:ShortEdgeFirst"))) +
        Feature(L"psk:PageOrientation", L"psk:Portrait") +
        Feature(L"psk:JobDuplexAllDocumentsContiguously", L"psk:OneSided") +
        Feature(L"psk:PageOutputColor", L"psk:" + std::wstring(color)));
}

// A printer's defaults: mostly private.
std::wstring PrinterDefault() {
    return Ticket(
        Feature(L"psk:PageScaling", L"psk:FitApplicationMediaSizeToPageMediaSize") +
            Feature(L"krk:JobIcmMode", L"krk:QvAcct") +
            Feature(L"krk:JobCompress", L"krk:Type2", Numbers({L"Threshold", L"AlignementBytes"})) +
            Feature(L"krk:PagePrintableMediaSize", L"krk:PrintableMediaSize",
                    Numbers({L"MinWidth", L"MinHeight", L"MaxWidth", L"MaxHeight"})) +
            Feature(L"krk:JobRtabContentType", L"krk:RtabIndex", Numbers({L"Image", L"Text", L"Graphics"})) +
            Feature(L"krk:JobTeskType", L"krk:Type7") + Feature(L"krk:JobBitsPerPixel", L"krk:Bits8") +
            Feature(L"krk:JobPageOrder", L"krk:Standard"),
        kPrivateDeclaration);
}

class PageCostTest : public tests::HandlerTest {
  protected:
    void SetUp() override {
        const auto base = MakeMock<tests::MockReadStream>(m_calls, Bytes(Validated(L"Color")));
        ASSERT_EQ(S_OK, m_provider.Open(base.Get(), platform::Bstr(L"Printer").Get(), nullptr));
        const auto job = MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/j");
        ASSERT_EQ(S_OK, m_provider.SetJobTicket(job.Get(), m_extra.Get()));
        const auto document = MakeMock<tests::MockFixedDocument>(m_calls, L"/d");
        ASSERT_EQ(S_OK, m_provider.SetDocumentTicket(document.Get(), m_extra.Get()));
        m_platform.merge = [this](const std::string&) { return Bytes(Validated(m_color)); };
    }

    void SetPage(const wchar_t* color) {
        m_color = color;
        const auto ticket = MakeMock<tests::MockPrintTicket>(
            m_calls, L"/t",
            Bytes(Ticket(Feature(L"psk:PageOrientation", L"psk:Portrait") +
                         Feature(L"psk:PageOutputColor", L"psk:" + std::wstring(color)))));
        const auto page = MakeMock<tests::MockFixedPage>(m_calls, L"/p", "<FixedPage/>",
                                                         ComPtr<IPartPrintTicket>(ticket.Get()));
        EXPECT_EQ(S_OK, m_provider.SetPageTicket(page.Get(), m_extra.Get()));
    }

    void ReadSettings() {
        Dom pTicket;
        ASSERT_EQ(S_OK, m_provider.ReadTicket(kPTPageScope, pTicket.Put()));
        const PrintTicketHandler ticket(pTicket.Get());
        ScalingData().ReadFrom(ticket);
        InputBinData().ReadFrom(ticket);
        MediaSizeData().ReadFrom(ticket);
        PageOrientationData().ReadFrom(ticket);
        PrintableMediaSizeData().ReadFrom(ticket);
    }

    tests::CallRecorder m_calls;
    tests::FakePlatformProvider m_platform{m_calls};
    PrintTicketProvider m_provider;
    Dom m_extra = base::xml::LoadDomFromString(PrinterDefault());
    std::wstring m_color;
};

// The calls of one kind, or of all kinds, while something is done.
template <typename Action>
std::size_t CallsOf(DomCall kind, Action&& action) {
    const DomFaults counted(kind, 0, S_OK);
    action();
    return counted.Calls();
}

template <typename Action>
std::size_t AllCallsOf(Action&& action) {
    const DomFaults counted(0, S_OK, tests::Saves::Counted);
    action();
    return counted.Calls();
}

TEST_P(PageCostTest, APageWithATicketOfItsOwnCostsNoMoreThanItMust) {
    // The first page looks at the printer's defaults for all that follow.
    SetPage(L"Color");
    EXPECT_LE(AllCallsOf([&] { SetPage(L"Monochrome"); }), 180U);
    EXPECT_EQ(0U, CallsOf(DomCall::Select, [&] { SetPage(L"Color"); }));
    EXPECT_LE(AllCallsOf([&] { ReadSettings(); }), 85U);
    EXPECT_LE(CallsOf(DomCall::Select, [&] { ReadSettings(); }), 15U);
}

TEST_P(PageCostTest, ThePrintersDefaultsAreReadOnceAJob) {
    const std::size_t first = AllCallsOf([&] { SetPage(L"Color"); });
    const std::size_t second = AllCallsOf([&] { SetPage(L"Monochrome"); });
    m_extra = base::xml::LoadDomFromString(PrinterDefault());
    const std::size_t withOthers = AllCallsOf([&] { SetPage(L"Color"); });
    EXPECT_LE(first, withOthers);
    EXPECT_LT(second + 40, withOthers);
}

TEST_P(PageCostTest, ClosingLetsGoOfWhatWasReadOfThePrintersDefaults) {
    const Dom extra = base::xml::LoadDomFromString(PrinterDefault());
    const auto references = [&] {
        extra->AddRef();
        return extra->Release();
    };
    const ULONG before = references();
    PrintTicketProvider provider;
    const auto base = MakeMock<tests::MockReadStream>(m_calls, Bytes(Validated(L"Color")));
    ASSERT_EQ(S_OK, provider.Open(base.Get(), platform::Bstr(L"Printer").Get(), nullptr));
    const auto job = MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/j");
    ASSERT_EQ(S_OK, provider.SetJobTicket(job.Get(), extra.Get()));
    EXPECT_LT(before, references());
    ASSERT_EQ(S_OK, provider.Close());
    EXPECT_EQ(before, references());
}

TEST_P(PageCostTest, ADocumentIsToldItsNamespaceOnceWhenItsPrefixIsTheUsualOne) {
    const Dom pUsual = base::xml::LoadDomFromString(Ticket(L""));
    EXPECT_EQ(2U, CallsOf(DomCall::SetProperty, [&] { const PrintTicketHandler ticket(pUsual.Get()); }));
    const std::wstring text = L"<f:PrintTicket xmlns:f=\"" + std::wstring(tests::kFrameworkUri) +
                              L"\" xmlns:k=\"" + std::wstring(tests::kKeywordsUri) + L"\"/>";
    const Dom pOther = base::xml::LoadDomFromString(text);
    EXPECT_EQ(3U, CallsOf(DomCall::SetProperty, [&] { const PrintTicketHandler ticket(pOther.Get()); }));
}

TEST_ON_EACH_DOM(PageCostTest);

}  // namespace
