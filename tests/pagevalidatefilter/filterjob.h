#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/xml/xmlutility.h"
#include "base/xps/printschema/printticketprovider.h"
#include "callrecorder.h"
#include "domtest.h"
#include "mockparts.h"
#include "mockpipeline.h"
#include "mockproperties.h"
#include "pagevalidatefilter/pagevalidatexpsfilter.h"
#include "platform/bstr.h"
#include "platform/comptr.h"

namespace pagevalidatefilter {

using Calls = std::vector<std::string>;

// What a page's effective ticket says: A4 in portrait, on a device that takes it, and the feed direction when
// one is given.
[[nodiscard]] std::wstring TicketText(std::wstring_view feedDirection = {});

// Pieces of such a ticket; lengths are micrometres. Names of options come with their prefixes, "krk" being
// the private one, and feed directions without.
[[nodiscard]] std::wstring BinText(std::wstring_view feedDirection);
[[nodiscard]] std::wstring SheetText(std::wstring_view option, int width, int height);
// What the device takes: 76200 at least and so much at most, either way.
[[nodiscard]] std::wstring PrintableText(int most);
[[nodiscard]] std::wstring TicketWith(std::wstring_view features);

// Gives each scope's effective ticket from its text, a document of its own for each call. Calls are noted as
// "GetTicket SCOPE", "SetJobTicket", "SetDocumentTicket", "SetPageTicket", "Open" and "Close provider".
class FakeTicketProvider final : public base::xps::printschema::PrintTicketProvider {
  public:
    FakeTicketProvider(tests::CallRecorder& calls, const std::map<EPrintTicketScope, std::wstring>& tickets)
        : m_calls(calls), m_tickets(tickets) {}

    HRESULT Open(IPrintReadStream*, BSTR, HANDLE) override { return m_calls.Enter("Open"); }
    HRESULT Close() override { return m_calls.Enter("Close provider"); }
    HRESULT SetJobTicket(IFixedDocumentSequence*, IXMLDOMDocument2*) override {
        return m_calls.Enter("SetJobTicket");
    }
    HRESULT SetDocumentTicket(IFixedDocument*, IXMLDOMDocument2*) override {
        return m_calls.Enter("SetDocumentTicket");
    }
    HRESULT SetPageTicket(IFixedPage*, IXMLDOMDocument2*) override { return m_calls.Enter("SetPageTicket"); }
    HRESULT GetTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket) override;

  private:
    tests::CallRecorder& m_calls;
    const std::map<EPrintTicketScope, std::wstring>& m_tickets;
};

// The filter with its handlers in reach.
class TestedFilter final : public PageValidateXpsFilter {
  public:
    using PageValidateXpsFilter::PageValidateXpsFilter;

    using PageValidateXpsFilter::DoOperation;
    using PageValidateXpsFilter::OnFixedDocument;
    using PageValidateXpsFilter::OnFixedDocumentSequence;
    using PageValidateXpsFilter::OnFixedPage;
    using PageValidateXpsFilter::OnUnknownPart;
    using PageValidateXpsFilter::OnXpsDocument;
};

// A filter between a document provider and a document consumer, with everything that a job needs.
class FilterJobTest : public tests::DomTest {
  protected:
    FilterJobTest();
    ~FilterJobTest() override;
    void TearDown() override;

    // A new, initialised filter and new parts at either side; the calls are forgotten.
    void Prepare();
    // Adds one sequence with one document and the given number of pages, and keeps the pages.
    void AddDocument(int pages);
    HRESULT Run() { return m_pFilter->StartOperation(); }
    // The calls of the kinds that the pattern list names, in order.
    [[nodiscard]] Calls CallsStarting(const std::vector<std::string>& starts) const;

    tests::CallRecorder m_calls;
    std::map<EPrintTicketScope, std::wstring> m_tickets;
    platform::ComPtr<tests::MockCommunicator> m_pCommunicator;
    platform::ComPtr<tests::MockPropertyBag> m_pBag;
    platform::ComPtr<tests::MockPipelineControl> m_pControl;
    platform::ComPtr<tests::MockDocumentProvider> m_pReader;
    platform::ComPtr<tests::MockDocumentConsumer> m_pWriter;
    platform::ComPtr<TestedFilter> m_pFilter;
    std::vector<platform::ComPtr<tests::MockFixedPage>> m_pages;
};

}  // namespace pagevalidatefilter
