#include "base/xps/printschema/printticketprovider.h"

#include <string_view>
#include <utility>

#include "base/logging/log.h"
#include "base/xml/xmlmarger.h"
#include "base/xml/xmlutility.h"
#include "base/xps/printschema/impersonation.h"
#include "base/xps/printschema/printticketstructurecomparator.h"
#include "base/xps/printschema/ticketdocument.h"
#include "platform/bstr.h"
#include "platform/inorder.h"

namespace base::xps::printschema {

using platform::Bstr;
using platform::ComPtr;
using platform::InOrder;

namespace {

constexpr DWORD kSchemaVersion = 1;

static_assert(kPTPageScope == 0 && kPTDocumentScope == 1 && kPTJobScope == 2);

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
void PutBack(xml::DocumentView& ticket, xml::DocumentView& other) {
    const PrintTicketStructureComparator comparator;
    xml::XmlMarger(comparator).Merge(ticket, other);
}

}  // namespace

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
    ComPtr<IStream> stream;
    return InOrder([&] { return user.Result(); }, [&] { return OpenPrinter(printerName); },
                   [&] { return WrapTicketStream(pBaseTicket, stream); },
                   [&] {
                       Ticket base;
                       const HRESULT loaded = LoadTicket(stream.Get(), base);
                       ReleaseTickets();
                       if (SUCCEEDED(loaded)) Store(m_base, std::move(base));
                       return loaded;
                   });
}

HRESULT PrintTicketProvider::OpenPrinter(BSTR name) {
    HPTPROVIDER provider = nullptr;
    const HRESULT opened = PTOpenProvider(name, kSchemaVersion, &provider);
    if (SUCCEEDED(opened)) m_provider.reset(provider);
    return opened;
}

HRESULT PrintTicketProvider::Close() {
    ReleaseTickets();
    const HPTPROVIDER provider = m_provider.release();
    return provider == nullptr ? S_OK : PTCloseProvider(provider);
}

HRESULT PrintTicketProvider::SetBaseTicket(IUnknown* pSource) {
    if (pSource == nullptr) return E_POINTER;
    Ticket document;
    Ticket base;
    ComPtr<IStream> stream;
    const HRESULT hr =
        SUCCEEDED(pSource->QueryInterface(__uuidof(IXMLDOMDocument2), document.PutVoid()))
            ? CopyTicket(document.Get(), base)
            : InOrder([&] { return pSource->QueryInterface(__uuidof(IStream), stream.PutVoid()); },
                      [&] { return LoadTicket(stream.Get(), base); });
    if (SUCCEEDED(hr)) Store(m_base, std::move(base));
    return hr;
}

HRESULT PrintTicketProvider::MergeTicket(EPrintTicketScope scope, IXMLDOMDocument2* pDelta,
                                         IXMLDOMDocument2* pExtra) {
    if (!IsTicketScope(scope)) return E_INVALIDARG;
    Clear(scope);
    const HRESULT hr = Derive(scope);
    if (FAILED(hr) || pDelta == nullptr) return hr;
    // Without the bytes of a part the merge is never taken for one that was made before.
    return MergeDelta(scope, {0, Ticket(pExtra), {}, Ticket(pDelta), {}});
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
    *ppTicket = Ticket(m_base.pTicket).Detach();
    m_base.isLent = true;
    return *ppTicket == nullptr ? E_PENDING : S_OK;
}

HRESULT PrintTicketProvider::GetTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket) {
    if (ppTicket == nullptr) return E_POINTER;
    *ppTicket = nullptr;
    if (!IsTicketScope(scope)) return E_INVALIDARG;
    const HRESULT hr = Derive(scope);
    if (FAILED(hr)) return hr;
    *ppTicket = Ticket(SlotOf(scope).pTicket).Detach();
    SlotOf(scope).isLent = true;
    return S_OK;
}

HRESULT PrintTicketProvider::ReadTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket) {
    const bool wasLent = IsTicketScope(scope) && SlotOf(scope).isLent;
    const HRESULT hr = GetTicket(scope, ppTicket);
    if (IsTicketScope(scope)) SlotOf(scope).isLent = wasLent;
    return hr;
}

std::uint64_t PrintTicketProvider::TicketVersion(EPrintTicketScope scope) const noexcept {
    return IsTicketScope(scope) ? VersionOf(SlotOf(scope)) : 0;
}

const TicketMedia* PrintTicketProvider::KeptMedia(EPrintTicketScope scope) const noexcept {
    if (TicketVersion(scope) == 0) return nullptr;
    const std::optional<TicketMedia>& media = SlotOf(scope).media;
    return media ? &*media : nullptr;
}

void PrintTicketProvider::KeepMedia(EPrintTicketScope scope, TicketMedia media) {
    if (TicketVersion(scope) != 0) SlotOf(scope).media = std::move(media);
}

HRESULT PrintTicketProvider::GetPrintCapabilities(IXMLDOMDocument2* pTicket,
                                                  IXMLDOMDocument2** ppCapabilities) {
    if (ppCapabilities != nullptr) *ppCapabilities = nullptr;
    if (pTicket == nullptr || ppCapabilities == nullptr) return E_POINTER;

    Ticket capabilities;
    const HRESULT hr = InOrder([&] { return CreateTicket(capabilities); },
                               [&] { return WriteCapabilities(pTicket, capabilities.Get()); });
    if (FAILED(hr)) return hr;
    // When the document takes in what was written into its stream is left open; now that the stream is gone
    // it must have.
    if (!HasRootElement(capabilities.Get())) return E_FAIL;
    *ppCapabilities = capabilities.Detach();
    return S_OK;
}

HRESULT PrintTicketProvider::WriteCapabilities(IXMLDOMDocument2* pTicket, IXMLDOMDocument2* pCapabilities) {
    ComPtr<IStream> ticket;
    ComPtr<IStream> capabilities;
    Bstr error;
    return InOrder([&] { return OpenTicketStream(pTicket, ticket); },
                   [&] { return OpenTicketStream(pCapabilities, capabilities); },
                   [&] {
                       const HRESULT hr = AsUser([&] {
                           return PTGetPrintCapabilities(m_provider.get(), ticket.Get(), capabilities.Get(),
                                                         error.Put());
                       });
                       if (FAILED(hr)) KeepFailure(nullptr, pTicket, "PTGetPrintCapabilities", error);
                       return hr;
                   },
                   [&] {
                       static_cast<void>(Rewind(capabilities.Get()));
                       return S_OK;
                   });
}

const PrintTicketProvider::Slot& PrintTicketProvider::ParentOf(EPrintTicketScope scope) const noexcept {
    if (scope == kPTPageScope) return SlotOf(kPTDocumentScope);
    return scope == kPTDocumentScope ? SlotOf(kPTJobScope) : m_base;
}

std::uint64_t PrintTicketProvider::VersionOf(const Slot& slot) noexcept {
    return slot.pTicket && !slot.isLent ? slot.version : 0;
}

void PrintTicketProvider::Store(Slot& slot, Ticket pTicket, std::optional<Origin> origin) noexcept {
    slot = {std::move(pTicket), ++m_lastVersion, false, std::move(origin), std::nullopt};
}

// Whether the scope's ticket, still as it was made, would be made of the same parent and the same extra
// ticket.
bool PrintTicketProvider::IsMadeOf(EPrintTicketScope scope, IXMLDOMDocument2* pExtra) const noexcept {
    const Slot& slot = SlotOf(scope);
    return VersionOf(slot) != 0 && slot.origin && slot.origin->parentVersion != 0 &&
           slot.origin->parentVersion == VersionOf(ParentOf(scope)) && slot.origin->pExtra.Get() == pExtra;
}

HRESULT PrintTicketProvider::Derive(EPrintTicketScope scope) {
    if (!m_base.pTicket) return E_PENDING;
    for (const EPrintTicketScope wider : {kPTJobScope, kPTDocumentScope, kPTPageScope}) {
        if (wider < scope) break;
        if (SlotOf(wider).pTicket) continue;
        Ticket copy;
        const HRESULT hr = CopyTicket(ParentOf(wider).pTicket.Get(), copy);
        if (FAILED(hr)) return hr;
        Store(SlotOf(wider), std::move(copy));
    }
    return S_OK;
}

void PrintTicketProvider::Clear(EPrintTicketScope scope) noexcept {
    for (const EPrintTicketScope narrower : {kPTPageScope, kPTDocumentScope, kPTJobScope}) {
        if (narrower <= scope) SlotOf(narrower) = {};
    }
}

void PrintTicketProvider::ReleaseTickets() noexcept {
    Clear(kPTJobScope);
    m_base = {};
    m_extra.reset();
}

xml::DocumentView& PrintTicketProvider::ViewOfExtra(IXMLDOMDocument2* pExtra) {
    if (!m_extra || m_extra->Document() != pExtra) m_extra = std::make_unique<xml::DocumentView>(pExtra);
    return *m_extra;
}

template <typename Part>
HRESULT PrintTicketProvider::SetPartTicket(Part* pPart, EPrintTicketScope scope, IXMLDOMDocument2* pExtra) {
    if (pPart == nullptr) return E_POINTER;
    ComPtr<IPartPrintTicket> pTicketPart;
    const HRESULT hr = pPart->GetPrintTicket(pTicketPart.Put());
    if (hr == E_ELEMENT_NOT_FOUND || (SUCCEEDED(hr) && !pTicketPart)) return InheritTicket(scope, pExtra);
    if (FAILED(hr)) return hr;
    ComPtr<IPrintReadStream> pStream;
    return InOrder([&] { return pTicketPart->GetStream(pStream.Put()); },
                   [&] { return MergePart(scope, pStream.Get(), pExtra); });
}

HRESULT PrintTicketProvider::InheritTicket(EPrintTicketScope scope, IXMLDOMDocument2* pExtra) {
    if (scope != kPTPageScope) Clear(static_cast<EPrintTicketScope>(scope - 1));
    if (IsMadeOf(scope, pExtra) && !SlotOf(scope).origin->pDelta) return S_OK;
    Clear(scope);
    const HRESULT hr = Derive(scope);
    if (FAILED(hr)) return hr;
    // Out of its slot while it changes: when the merge throws, the scope is empty and is derived anew.
    Ticket ticket = std::move(SlotOf(scope).pTicket);
    if (pExtra != nullptr) {
        xml::DocumentView view(ticket.Get());
        PutBack(view, ViewOfExtra(pExtra));
    }
    Store(SlotOf(scope), std::move(ticket), Origin{VersionOf(ParentOf(scope)), Ticket(pExtra), {}, {}, {}});
    return S_OK;
}

HRESULT PrintTicketProvider::MergePart(EPrintTicketScope scope, IPrintReadStream* pStream,
                                       IXMLDOMDocument2* pExtra) {
    Origin origin{0, Ticket(pExtra), {}, {}, {}};
    ComPtr<IStream> stream;
    const HRESULT hr = InOrder([&] { return WrapTicketStream(pStream, stream); },
                               [&] { return ReadTicketBytes(stream.Get(), origin.partBytes); },
                               [&] {
                                   const std::optional<Origin>& before = SlotOf(scope).origin;
                                   if (before && before->pDelta && before->partBytes == origin.partBytes) {
                                       origin.pDelta = before->pDelta;
                                       return S_OK;
                                   }
                                   return LoadTicketBytes(origin.partBytes, origin.pDelta);
                               });
    return FAILED(hr) ? hr : MergeDelta(scope, std::move(origin));
}

HRESULT PrintTicketProvider::MergeDelta(EPrintTicketScope scope, Origin origin) {
    const Slot& parent = ParentOf(scope);
    if (!parent.pTicket) return E_PENDING;
    origin.parentVersion = VersionOf(parent);
    ComPtr<IStream> resultStream;
    return InOrder([&] { return MergeOnPlatform(scope, origin.pDelta.Get(), resultStream); },
                   [&] { return ReadTicketBytes(resultStream.Get(), origin.resultBytes); },
                   [&] { return StoreResult(scope, resultStream.Get(), std::move(origin)); });
}

HRESULT PrintTicketProvider::StoreResult(EPrintTicketScope scope, IStream* pResult, Origin origin) {
    const std::optional<Origin>& before = SlotOf(scope).origin;
    if (IsMadeOf(scope, origin.pExtra.Get()) && !origin.partBytes.empty() &&
        before->partBytes == origin.partBytes && before->resultBytes == origin.resultBytes) {
        return S_OK;
    }
    Ticket result;
    const HRESULT loaded = LoadTicket(pResult, result);
    if (FAILED(loaded)) return loaded;
    xml::DocumentView view(result.Get());
    xml::DocumentView delta(origin.pDelta.Get());
    PutBack(view, delta);
    if (origin.pExtra) PutBack(view, ViewOfExtra(origin.pExtra.Get()));
    Store(SlotOf(scope), std::move(result), std::move(origin));
    return S_OK;
}

HRESULT PrintTicketProvider::MergeOnPlatform(EPrintTicketScope scope, IXMLDOMDocument2* pDelta,
                                             ComPtr<IStream>& result) {
    IXMLDOMDocument2* const pParent = ParentOf(scope).pTicket.Get();
    ComPtr<IStream> parentStream;
    ComPtr<IStream> deltaStream;
    // The platform leaves the text alone when it has none to give.
    Bstr error;
    return InOrder([&] { return OpenTicketStream(pParent, parentStream); },
                   [&] { return OpenTicketStream(pDelta, deltaStream); },
                   [&] { return CreateStreamOnHGlobal(nullptr, TRUE, result.Put()); },
                   [&] {
                       const HRESULT hr = AsUser([&] {
                           return PTMergeAndValidatePrintTicket(m_provider.get(), parentStream.Get(),
                                                                deltaStream.Get(), scope, result.Get(),
                                                                error.Put());
                       });
                       if (FAILED(hr)) KeepFailure(pParent, pDelta, "PTMergeAndValidatePrintTicket", error);
                       return hr;
                   });
}

template <typename Call>
HRESULT PrintTicketProvider::AsUser(Call&& call) const {
    const Impersonation user(m_userToken);
    return FAILED(user.Result()) ? user.Result() : call();
}

void PrintTicketProvider::KeepFailure(IXMLDOMDocument2* pParent, IXMLDOMDocument2* pTicket, const char* call,
                                      const Bstr& message) noexcept {
    try {
        m_lastFailure = {
            pParent == nullptr ? std::wstring() : xml::DomToString(pParent), xml::DomToString(pTicket),
            logging::Format("%s failed with message: %s\n", call, Narrow(message.View()).c_str())};
    } catch (...) {
        // The call's own failure is what counts.
        m_lastFailure = {};
    }
}

}  // namespace base::xps::printschema
