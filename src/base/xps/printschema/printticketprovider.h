#pragma once

#include "platform/windows.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/xml/documentview.h"
#include "base/xps/printschema/mediasizetable.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"
#include "platform/prntvpt.h"

namespace base::xps::printschema {

// What a call of the platform that failed was given, and what the platform said of it. There is no log that
// it goes to: it is there for whoever looks at a stopped process or its dump.
struct TicketTrace {
    std::wstring parent;
    std::wstring delta;
    std::string message;
};

// The media size that was read from a scope's ticket, under the private prefix of that moment.
struct TicketMedia {
    std::wstring privatePrefix;
    MediaDimensions size;
    MediaSizeOption record;
};

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
//
// What costs is done once: pages without a ticket of their own share one effective ticket as long as the
// document's and the extra ticket are the same, and a page whose ticket and whose validated result are those
// of the page before keeps that page's. The platform is asked for every page with a ticket all the same. An
// extra ticket is not changed by its owner while the provider is open: what was read of it is kept.
class PrintTicketProvider {
  public:
    PrintTicketProvider() = default;
    PrintTicketProvider(const PrintTicketProvider&) = delete;
    PrintTicketProvider& operator=(const PrintTicketProvider&) = delete;
    virtual ~PrintTicketProvider();

    // Closes the printer that is open, opens the given one and loads the ticket that the job starts from, in
    // the place of all tickets that are there. They stay when the printer cannot be opened or the stream not
    // be wrapped; a ticket that cannot be loaded leaves none. The token is borrowed until Close.
    virtual HRESULT Open(IPrintReadStream* pBaseTicket, BSTR printerName, HANDLE userToken);

    // Releases the tickets, so that no document outlives the apartment that it was made in, and closes the
    // printer. S_OK when nothing is open.
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
    // one. The caller may change it, so nothing is shared with it or kept of it from then on.
    virtual HRESULT GetTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket);

    // What the printer can do under the given ticket.
    virtual HRESULT GetPrintCapabilities(IXMLDOMDocument2* pTicket, IXMLDOMDocument2** ppCapabilities);

    // GetTicket for a caller that changes nothing.
    HRESULT ReadTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket);

    // Tells the contents of a scope's ticket from all others that it had or will have. 0 is no contents in
    // particular: there is no ticket, or somebody may have changed it.
    [[nodiscard]] std::uint64_t TicketVersion(EPrintTicketScope scope) const noexcept;

    // What was kept of the scope's ticket, for as long as the ticket stays what it was; null when nothing
    // was.
    [[nodiscard]] const TicketMedia* KeptMedia(EPrintTicketScope scope) const noexcept;
    // Kept only of a ticket with a version.
    void KeepMedia(EPrintTicketScope scope, TicketMedia media);

    // Of the last merge, or query for capabilities, that the platform refused; empty before there was one.
    [[nodiscard]] const TicketTrace& LastFailure() const noexcept { return m_lastFailure; }

  private:
    using Ticket = platform::ComPtr<IXMLDOMDocument2>;

    struct ProviderCloser {
        using pointer = HPTPROVIDER;
        void operator()(HPTPROVIDER provider) const noexcept;
    };

    // What a scope's ticket was made of. The same again makes the same ticket, unless a version is 0.
    struct Origin {
        std::uint64_t parentVersion = 0;
        Ticket pExtra;
        // Of a part with a ticket: its bytes, the document that was loaded from them, and what the platform
        // made of it.
        std::string partBytes;
        Ticket pDelta;
        std::string resultBytes;
    };

    struct Slot {
        Ticket pTicket;
        std::uint64_t version = 0;
        bool isLent = false;
        std::optional<Origin> origin;
        std::optional<TicketMedia> media;
    };

    [[nodiscard]] xml::DocumentView& ViewOfExtra(IXMLDOMDocument2* pExtra);

    // The scope is one of the three in everything below.
    [[nodiscard]] Slot& SlotOf(EPrintTicketScope scope) noexcept { return m_slots[scope]; }
    [[nodiscard]] const Slot& SlotOf(EPrintTicketScope scope) const noexcept { return m_slots[scope]; }
    [[nodiscard]] const Slot& ParentOf(EPrintTicketScope scope) const noexcept;
    [[nodiscard]] static std::uint64_t VersionOf(const Slot& slot) noexcept;
    void Store(Slot& slot, Ticket pTicket, std::optional<Origin> origin = std::nullopt) noexcept;
    [[nodiscard]] bool IsMadeOf(EPrintTicketScope scope, IXMLDOMDocument2* pExtra) const noexcept;

    [[nodiscard]] HRESULT OpenPrinter(BSTR name);
    [[nodiscard]] HRESULT Derive(EPrintTicketScope scope);
    void Clear(EPrintTicketScope scope) noexcept;
    void ReleaseTickets() noexcept;

    template <typename Part>
    [[nodiscard]] HRESULT SetPartTicket(Part* pPart, EPrintTicketScope scope, IXMLDOMDocument2* pExtra);
    [[nodiscard]] HRESULT InheritTicket(EPrintTicketScope scope, IXMLDOMDocument2* pExtra);
    [[nodiscard]] HRESULT MergePart(EPrintTicketScope scope, IPrintReadStream* pStream,
                                    IXMLDOMDocument2* pExtra);
    [[nodiscard]] HRESULT MergeDelta(EPrintTicketScope scope, Origin origin);
    [[nodiscard]] HRESULT StoreResult(EPrintTicketScope scope, IStream* pResult, Origin origin);
    [[nodiscard]] HRESULT MergeOnPlatform(EPrintTicketScope scope, IXMLDOMDocument2* pDelta,
                                          platform::ComPtr<IStream>& result);
    [[nodiscard]] HRESULT WriteCapabilities(IXMLDOMDocument2* pTicket, IXMLDOMDocument2* pCapabilities);
    template <typename Call>
    [[nodiscard]] HRESULT AsUser(Call&& call) const;
    void KeepFailure(IXMLDOMDocument2* pParent, IXMLDOMDocument2* pTicket, const char* call,
                     const platform::Bstr& message) noexcept;

    Slot m_base;
    // By scope: page, document, job.
    std::array<Slot, 3> m_slots;
    std::unique_ptr<HPTPROVIDER, ProviderCloser> m_provider;
    HANDLE m_userToken = INVALID_HANDLE_VALUE;
    std::uint64_t m_lastVersion = 0;
    // Of the extra ticket that was merged last.
    std::unique_ptr<xml::DocumentView> m_extra;
    TicketTrace m_lastFailure;
};

}  // namespace base::xps::printschema
