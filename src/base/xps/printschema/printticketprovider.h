#pragma once

#include "platform/windows.h"

#include <memory>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"
#include "platform/prntvpt.h"

namespace base::xps::printschema {

// The print tickets of one job: what the job starts from (the base), and the effective ticket of the job, of
// the current document and of the current page. Each is the wider one merged with the part's own ticket and
// validated by the platform's print ticket provider; what validation dropped is then put back. The provider
// is called under the job's user token, which is set for the call and taken back after it.
//
// One thread uses one object from Open to Close, because the platform's handle belongs to the thread that
// opened it. Every operation returns an HRESULT: E_POINTER for a null argument, E_INVALIDARG for a scope
// outside 0..2, E_PENDING when the ticket that the operation builds on is missing, E_FAIL for a ticket that
// is not well formed, E_OUTOFMEMORY when a stream cannot be wrapped, else the platform's own code. The
// merger's exceptions pass through. Out-parameters are null after a failure and referenced for the caller
// after a success.
class PrintTicketProvider {
  public:
    PrintTicketProvider() = default;
    PrintTicketProvider(const PrintTicketProvider&) = delete;
    PrintTicketProvider& operator=(const PrintTicketProvider&) = delete;
    virtual ~PrintTicketProvider();

    // Closes what is open, opens the printer and loads the ticket that the job starts from. The token is
    // borrowed until Close.
    virtual HRESULT Open(IPrintReadStream* pBaseTicket, BSTR printerName, HANDLE userToken);

    // S_OK when nothing is open. The tickets stay readable.
    virtual HRESULT Close();

    // Takes the base ticket from any object that has an IStream.
    virtual HRESULT SetBaseTicket(IUnknown* pSource);

    // Makes the scope's ticket a copy of the wider one, forgets the narrower ones, and merges the delta and
    // then the extra ticket over it. Either may be null; without a delta there is nothing to merge.
    virtual HRESULT MergeTicket(EPrintTicketScope scope, IXMLDOMDocument2* pDelta, IXMLDOMDocument2* pExtra);

    // Merges the part's own ticket, and then the extra ticket, which may be null, over the wider scope's
    // ticket. The parts come in the order of the document: the sequence, then each document with its pages. A
    // part without a ticket gets a copy of the wider one with the extra ticket merged in, and the narrower
    // ones are forgotten.
    virtual HRESULT SetPageTicket(IFixedPage* pPage, IXMLDOMDocument2* pExtra);
    virtual HRESULT SetDocumentTicket(IFixedDocument* pDocument, IXMLDOMDocument2* pExtra);
    virtual HRESULT SetJobTicket(IFixedDocumentSequence* pSequence, IXMLDOMDocument2* pExtra);

    virtual HRESULT GetBaseTicket(IXMLDOMDocument2** ppTicket);

    // The scope's effective ticket itself, no copy; a scope that has none yet first gets a copy of the wider
    // one.
    virtual HRESULT GetTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket);

    // What the printer can do under the given ticket.
    virtual HRESULT GetPrintCapabilities(IXMLDOMDocument2* pTicket, IXMLDOMDocument2** ppCapabilities);

  private:
    using Ticket = platform::ComPtr<IXMLDOMDocument2>;
    struct MergeTrace;

    struct ProviderCloser {
        using pointer = HPTPROVIDER;
        void operator()(HPTPROVIDER provider) const noexcept;
    };

    // The scope is one of the three in everything below.
    [[nodiscard]] Ticket& Slot(EPrintTicketScope scope) noexcept;
    [[nodiscard]] const Ticket& Parent(EPrintTicketScope scope) const noexcept;
    [[nodiscard]] HRESULT Derive(EPrintTicketScope scope);
    void Clear(EPrintTicketScope scope) noexcept;

    template <typename Part>
    [[nodiscard]] HRESULT SetPartTicket(Part* pPart, EPrintTicketScope scope, IXMLDOMDocument2* pExtra);
    [[nodiscard]] HRESULT InheritTicket(EPrintTicketScope scope, IXMLDOMDocument2* pExtra);
    [[nodiscard]] HRESULT MergeDelta(EPrintTicketScope scope, IXMLDOMDocument2* pDelta,
                                     IXMLDOMDocument2* pExtra);
    [[nodiscard]] HRESULT MergeOnPlatform(EPrintTicketScope scope, IXMLDOMDocument2* pDelta, Ticket& result,
                                          MergeTrace& trace);
    [[nodiscard]] HRESULT WriteCapabilities(IXMLDOMDocument2* pTicket, IXMLDOMDocument2* pCapabilities);

    Ticket m_pBaseTicket;
    Ticket m_pJobTicket;
    Ticket m_pDocumentTicket;
    Ticket m_pPageTicket;
    std::unique_ptr<HPTPROVIDER, ProviderCloser> m_provider;
    HANDLE m_userToken = INVALID_HANDLE_VALUE;
};

}  // namespace base::xps::printschema
