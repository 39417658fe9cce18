#include "pagevalidatefilter/filterjob.h"

#include <algorithm>

#include "base/xps/printschema/privateprefix.h"
#include "mockstreams.h"
#include "pagevalidatefilter/module.h"

namespace pagevalidatefilter {

using platform::ComPtr;
using tests::MakeMock;

std::wstring TicketText(std::wstring_view feedDirection) {
    std::wstring text =
        LR"(<psf:PrintTicket xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
              xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
              xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema"
              xmlns:krk="http://schemas.pagevalidate.example/printing/ptpc/2008/11" version="1">
             <psf:Feature name="psk:PageMediaSize"><psf:Option name="psk:ISOA4">
               <psf:ScoredProperty name="psk:MediaSizeWidth">
                 <psf:Value xsi:type="xsd:integer">210000</psf:Value></psf:ScoredProperty>
               <psf:ScoredProperty name="psk:MediaSizeHeight">
                 <psf:Value xsi:type="xsd:integer">297000</psf:Value></psf:ScoredProperty>
             </psf:Option></psf:Feature>
             <psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Portrait"/></psf:Feature>
             <psf:Feature name="krk:PagePrintableMediaSize"><psf:Option name="krk:PrintableMediaSize">
               <psf:Property name="krk:MinWidth"><psf:Value xsi:type="xsd:integer">76200</psf:Value></psf:Property>
               <psf:Property name="krk:MinHeight"><psf:Value xsi:type="xsd:integer">76200</psf:Value></psf:Property>
               <psf:Property name="krk:MaxWidth"><psf:Value xsi:type="xsd:integer">400000</psf:Value></psf:Property>
               <psf:Property name="krk:MaxHeight"><psf:Value xsi:type="xsd:integer">400000</psf:Value></psf:Property>
             </psf:Option></psf:Feature>)";
    if (!feedDirection.empty()) {
        text.append(
                LR"(<psf:Feature name="psk:JobInputBin"><psf:Option name="psk:Tray1">
                          <psf:ScoredProperty name="psk:FeedDirection"><psf:Value xsi:type="xsd:QName">psk:)")
            .append(feedDirection)
            .append(L"</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>");
    }
    return text.append(L"</psf:PrintTicket>");
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
