#include "pagevalidatefilter/filterjob.h"

#include <algorithm>

#include "base/xps/printschema/privateprefix.h"
#include "base/xps/printschema/schemabase.h"
#include "mockstreams.h"
#include "pagevalidatefilter/module.h"
#include "ticketmarkup.h"

namespace pagevalidatefilter {

using platform::ComPtr;
using tests::Feature;
using tests::Integer;
using tests::MakeMock;
using tests::Property;
using tests::ScoredProperty;
using tests::Value;

std::wstring BinText(std::wstring_view feedDirection) {
    return Feature(
        L"psk:JobInputBin", L"psk:Tray1",
        ScoredProperty(L"psk:FeedDirection", Value(L"QName", L"psk:" + std::wstring(feedDirection))));
}

std::wstring SheetText(std::wstring_view option, int width, int height) {
    return Feature(L"psk:PageMediaSize", option,
                   ScoredProperty(L"psk:MediaSizeWidth", Integer(width)) +
                       ScoredProperty(L"psk:MediaSizeHeight", Integer(height)));
}

std::wstring PrintableText(int most) {
    return Feature(L"krk:PagePrintableMediaSize", L"krk:PrintableMediaSize",
                   Property(L"krk:MinWidth", Integer(76200)) + Property(L"krk:MinHeight", Integer(76200)) +
                       Property(L"krk:MaxWidth", Integer(most)) + Property(L"krk:MaxHeight", Integer(most)));
}

std::wstring TicketWith(std::wstring_view features) {
    return tests::Ticket(features,
                         L" xmlns:krk=\"" + std::wstring(base::xps::printschema::kPrivateNamespace) + L"\"");
}

std::wstring TicketText(std::wstring_view feedDirection) {
    return TicketWith(SheetText(L"psk:ISOA4", 210000, 297000) +
                      Feature(L"psk:PageOrientation", L"psk:Portrait") + PrintableText(400000) +
                      (feedDirection.empty() ? std::wstring() : BinText(feedDirection)));
}

HRESULT FakeTicketProvider::GetTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket) {
    *ppTicket = nullptr;
    const HRESULT hr = m_calls.Enter("GetTicket " + std::to_string(scope));
    if (SUCCEEDED(hr)) *ppTicket = base::xml::LoadDomFromString(m_tickets.at(scope)).Detach();
    return hr;
}

FilterJobTest::FilterJobTest() {
    EXPECT_EQ(0, ModuleCount());
    for (const EPrintTicketScope scope : {kPTPageScope, kPTDocumentScope, kPTJobScope}) {
        m_tickets[scope] = TicketText();
    }
    Prepare();
}

FilterJobTest::~FilterJobTest() { EXPECT_EQ(0, ModuleCount()); }

void FilterJobTest::TearDown() {
    m_pFilter.Reset();
    DomTest::TearDown();
    base::xps::printschema::SetPrivatePrefix(L"");
}

void FilterJobTest::Prepare() {
    m_pages.clear();
    m_pReader = MakeMock<tests::MockDocumentProvider>(m_calls);
    m_pWriter = MakeMock<tests::MockDocumentConsumer>(m_calls);
    m_pControl = MakeMock<tests::MockPipelineControl>(m_calls);
    m_pCommunicator = MakeMock<tests::MockCommunicator>(m_calls);
    m_pCommunicator->SetReader(m_pReader.Get());
    m_pCommunicator->SetWriter(m_pWriter.Get());
    const auto pDriverBag = MakeMock<tests::MockPrinterPropertyBag>(m_calls);
    pDriverBag->SetText(L"KoraNsPrefix", L"krk");
    pDriverBag->SetNumber(L"KoraTeskType", 1);
    m_pBag = MakeMock<tests::MockPropertyBag>(m_calls);
    m_pBag->SetObject(L"DriverPropertyBag", pDriverBag.Get());
    m_pBag->SetObject(L"PerUserPrintTicket", MakeMock<tests::MockReadStreamFactory>(m_calls, "<t/>").Get());
    m_pBag->SetText(L"PrinterName", L"Printer");
    m_pBag->SetHandle(L"UserSecurityToken", reinterpret_cast<HANDLE>(0x4321));
    m_pFilter = ComPtr<TestedFilter>::Adopt(
        new TestedFilter(std::make_unique<FakeTicketProvider>(m_calls, m_tickets)));
    EXPECT_EQ(S_OK, m_pFilter->InitializeFilter(m_pCommunicator.Get(), m_pBag.Get(), m_pControl.Get()));
    m_calls.Clear();
}

void FilterJobTest::AddDocument(int pages) {
    m_pReader->Add(MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/s.fdseq").Get());
    m_pReader->Add(MakeMock<tests::MockFixedDocument>(m_calls, L"/d.fdoc").Get());
    for (int page = 1; page <= pages; ++page) {
        m_pages.push_back(MakeMock<tests::MockFixedPage>(
            m_calls, L"/" + std::to_wstring(page) + L".fpage",
            R"(<FixedPage Width="793.7" Height="1122.5" xmlns="http://schemas.microsoft.com/xps/2005/06"/>)"));
        m_pReader->Add(m_pages.back().Get());
    }
}

Calls FilterJobTest::CallsStarting(const std::vector<std::string>& starts) const {
    Calls chosen;
    std::ranges::copy_if(m_calls.Calls(), std::back_inserter(chosen), [&](const std::string& call) {
        return std::ranges::any_of(starts, [&](const std::string& start) { return call.starts_with(start); });
    });
    return chosen;
}

}  // namespace pagevalidatefilter
