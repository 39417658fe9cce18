#include "base/xps/printschema/printticketprovider.h"

#include <string>
#include <string_view>
#include <utility>

#include "base/logging/log.h"
#include "base/xml/xmlmarger.h"
#include "base/xml/xmlutility.h"
#include "base/xps/printschema/impersonation.h"
#include "base/xps/printschema/printticketstructurecomparator.h"
#include "base/xps/printschema/ticketdocument.h"
#include "platform/bstr.h"

namespace base::xps::printschema {

using platform::Bstr;
using platform::ComPtr;

namespace {

constexpr DWORD SchemaVersion = 1;

[[nodiscard]] bool IsTicketScope(EPrintTicketScope scope) noexcept {
    return scope == kPTPageScope || scope == kPTDocumentScope || scope == kPTJobScope;
}

[[nodiscard]] std::string Narrow(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
    return narrow;
}

// Puts into the ticket what the other one has and it lacks.
void PutBack(IXMLDOMDocument2* pTicket, IXMLDOMDocument2* pOther) {
    const PrintTicketStructureComparator comparator;
    xml::XmlMarger(comparator).Merge(pTicket, pOther);
}

}  // namespace

// What a merge was given and what came of it, as text. There is no log that it goes to: it is there for
// whoever looks at a stopped process or its dump.
struct PrintTicketProvider::MergeTrace {
    std::wstring parent;
    std::wstring delta;
    std::wstring result;
    std::string failure;
};

void PrintTicketProvider::ProviderCloser::operator()(HPTPROVIDER provider) const noexcept {
    PTCloseProvider(provider);
}

PrintTicketProvider::~PrintTicketProvider() = default;

HRESULT PrintTicketProvider::Open(IPrintReadStream* pBaseTicket, BSTR printerName, HANDLE userToken) {
    m_userToken = userToken;
    m_provider.reset();
    if (pBaseTicket == nullptr) return E_POINTER;
    if (SysStringLen(printerName) == 0) return E_INVALIDARG;

    const Impersonation user(m_userToken);
    if (FAILED(user.Result())) return user.Result();
    HPTPROVIDER provider = nullptr;
    const HRESULT hr = PTOpenProvider(printerName, SchemaVersion, &provider);
    if (FAILED(hr)) return hr;
    m_provider.reset(provider);

    m_pBaseTicket.Reset();
    Clear(kPTJobScope);
    return LoadTicket(pBaseTicket, m_pBaseTicket);
}

HRESULT PrintTicketProvider::Close() {
    const HPTPROVIDER provider = m_provider.release();
    return provider == nullptr ? S_OK : PTCloseProvider(provider);
}

HRESULT PrintTicketProvider::SetBaseTicket(IUnknown* pSource) {
    if (pSource == nullptr) return E_POINTER;
    Ticket document;
    if (SUCCEEDED(pSource->QueryInterface(__uuidof(IXMLDOMDocument2), document.PutVoid()))) {
        return CopyTicket(document.Get(), m_pBaseTicket);
    }
    ComPtr<IStream> stream;
    const HRESULT hr = pSource->QueryInterface(__uuidof(IStream), stream.PutVoid());
    return FAILED(hr) ? hr : LoadTicket(stream.Get(), m_pBaseTicket);
}

HRESULT PrintTicketProvider::MergeTicket(EPrintTicketScope scope, IXMLDOMDocument2* pDelta,
                                         IXMLDOMDocument2* pExtra) {
    if (!IsTicketScope(scope)) return E_INVALIDARG;
    Clear(scope);
    const HRESULT hr = Derive(scope);
    if (FAILED(hr) || pDelta == nullptr) return hr;
    return MergeDelta(scope, pDelta, pExtra);
}

HRESULT PrintTicketProvider::SetPageTicket(IFixedPage* pPage, IXMLDOMDocument2* pExtra) {
    return SetPartTicket(pPage, kPTPageScope, pExtra);
}

HRESULT PrintTicketProvider::SetDocumentTicket(IFixedDocument* pDocument, IXMLDOMDocument2* pExtra) {
    return SetPartTicket(pDocument, kPTDocumentScope, pExtra);
}

HRESULT PrintTicketProvider::SetJobTicket(IFixedDocumentSequence* pSequence, IXMLDOMDocument2* pExtra) {
    return SetPartTicket(pSequence, kPTJobScope, pExtra);
}

HRESULT PrintTicketProvider::GetBaseTicket(IXMLDOMDocument2** ppTicket) {
    if (ppTicket == nullptr) return E_POINTER;
    *ppTicket = Ticket(m_pBaseTicket).Detach();
    return *ppTicket == nullptr ? E_PENDING : S_OK;
}

HRESULT PrintTicketProvider::GetTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket) {
    if (ppTicket == nullptr) return E_POINTER;
    *ppTicket = nullptr;
    if (!IsTicketScope(scope)) return E_INVALIDARG;
    const HRESULT hr = Derive(scope);
    if (FAILED(hr)) return hr;
    *ppTicket = Ticket(Slot(scope)).Detach();
    return S_OK;
}

HRESULT PrintTicketProvider::GetPrintCapabilities(IXMLDOMDocument2* pTicket,
                                                  IXMLDOMDocument2** ppCapabilities) {
    if (ppCapabilities != nullptr) *ppCapabilities = nullptr;
    if (pTicket == nullptr || ppCapabilities == nullptr) return E_POINTER;

    Ticket capabilities;
    HRESULT hr = CreateTicket(capabilities);
    if (FAILED(hr)) return hr;
    hr = WriteCapabilities(pTicket, capabilities.Get());
    if (FAILED(hr)) return hr;
    // When the document takes in what was written into its stream is left open; now that the stream is gone
    // it must have.
    if (!HasRootElement(capabilities.Get())) return E_FAIL;
    *ppCapabilities = capabilities.Detach();
    return S_OK;
}

HRESULT PrintTicketProvider::WriteCapabilities(IXMLDOMDocument2* pTicket, IXMLDOMDocument2* pCapabilities) {
    ComPtr<IStream> ticket;
    HRESULT hr = OpenTicketStream(pTicket, ticket);
    if (FAILED(hr)) return hr;
    ComPtr<IStream> capabilities;
    hr = OpenTicketStream(pCapabilities, capabilities);
    if (FAILED(hr)) return hr;

    Bstr error;
    {
        const Impersonation user(m_userToken);
        if (FAILED(user.Result())) return user.Result();
        hr = PTGetPrintCapabilities(m_provider.get(), ticket.Get(), capabilities.Get(), error.Put());
    }
    if (SUCCEEDED(hr)) static_cast<void>(Rewind(capabilities.Get()));
    return hr;
}

PrintTicketProvider::Ticket& PrintTicketProvider::Slot(EPrintTicketScope scope) noexcept {
    if (scope == kPTPageScope) return m_pPageTicket;
    return scope == kPTDocumentScope ? m_pDocumentTicket : m_pJobTicket;
}

const PrintTicketProvider::Ticket& PrintTicketProvider::Parent(EPrintTicketScope scope) const noexcept {
    if (scope == kPTPageScope) return m_pDocumentTicket;
    return scope == kPTDocumentScope ? m_pJobTicket : m_pBaseTicket;
}

HRESULT PrintTicketProvider::Derive(EPrintTicketScope scope) {
    if (!m_pBaseTicket) return E_PENDING;
    for (const EPrintTicketScope wider : {kPTJobScope, kPTDocumentScope, kPTPageScope}) {
        if (wider < scope) break;
        if (Slot(wider)) continue;
        const HRESULT hr = CopyTicket(Parent(wider).Get(), Slot(wider));
        if (FAILED(hr)) return hr;
    }
    return S_OK;
}

void PrintTicketProvider::Clear(EPrintTicketScope scope) noexcept {
    for (const EPrintTicketScope narrower : {kPTPageScope, kPTDocumentScope, kPTJobScope}) {
        if (narrower <= scope) Slot(narrower).Reset();
    }
}

template <typename Part>
HRESULT PrintTicketProvider::SetPartTicket(Part* pPart, EPrintTicketScope scope, IXMLDOMDocument2* pExtra) {
    if (pPart == nullptr) return E_POINTER;
    ComPtr<IPartPrintTicket> pTicketPart;
    HRESULT hr = pPart->GetPrintTicket(pTicketPart.Put());
    if (hr == E_ELEMENT_NOT_FOUND || (SUCCEEDED(hr) && !pTicketPart)) return InheritTicket(scope, pExtra);
    if (FAILED(hr)) return hr;

    ComPtr<IPrintReadStream> pStream;
    hr = pTicketPart->GetStream(pStream.Put());
    if (FAILED(hr)) return hr;
    Ticket delta;
    hr = LoadTicket(pStream.Get(), delta);
    return FAILED(hr) ? hr : MergeDelta(scope, delta.Get(), pExtra);
}

HRESULT PrintTicketProvider::InheritTicket(EPrintTicketScope scope, IXMLDOMDocument2* pExtra) {
    Clear(scope);
    const HRESULT hr = Derive(scope);
    if (FAILED(hr) || pExtra == nullptr) return hr;
    // Out of its slot while it changes: when the merge throws, the scope is empty and is derived anew.
    Ticket ticket = std::move(Slot(scope));
    PutBack(ticket.Get(), pExtra);
    Slot(scope) = std::move(ticket);
    return S_OK;
}

HRESULT PrintTicketProvider::MergeDelta(EPrintTicketScope scope, IXMLDOMDocument2* pDelta,
                                        IXMLDOMDocument2* pExtra) {
    const Ticket& parent = Parent(scope);
    if (!parent) return E_PENDING;
    MergeTrace trace = {xml::DomToString(parent.Get()), xml::DomToString(pDelta), {}, {}};
    Ticket result;
    const HRESULT hr = MergeOnPlatform(scope, pDelta, result, trace);
    if (FAILED(hr)) return hr;
    PutBack(result.Get(), pDelta);
    if (pExtra != nullptr) PutBack(result.Get(), pExtra);
    trace.result = xml::DomToString(result.Get());
    Slot(scope) = std::move(result);
    return S_OK;
}

HRESULT PrintTicketProvider::MergeOnPlatform(EPrintTicketScope scope, IXMLDOMDocument2* pDelta,
                                             Ticket& result, MergeTrace& trace) {
    ComPtr<IStream> parentStream;
    HRESULT hr = OpenTicketStream(Parent(scope).Get(), parentStream);
    if (FAILED(hr)) return hr;
    ComPtr<IStream> deltaStream;
    hr = OpenTicketStream(pDelta, deltaStream);
    if (FAILED(hr)) return hr;
    ComPtr<IStream> resultStream;
    hr = CreateStreamOnHGlobal(nullptr, TRUE, resultStream.Put());
    if (FAILED(hr)) return hr;

    // The platform leaves the text alone when it has none to give.
    Bstr error;
    {
        const Impersonation user(m_userToken);
        if (FAILED(user.Result())) return user.Result();
        hr = PTMergeAndValidatePrintTicket(m_provider.get(), parentStream.Get(), deltaStream.Get(), scope,
                                           resultStream.Get(), error.Put());
    }
    if (FAILED(hr)) {
        trace.failure = logging::Format("PTMergeAndValidatePrintTicket failed with message: %s\n",
                                        Narrow(error.View()).c_str());
        return hr;
    }
    return LoadTicket(resultStream.Get(), result);
}

}  // namespace base::xps::printschema
