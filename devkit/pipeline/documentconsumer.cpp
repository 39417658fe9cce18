#include "devkit/pipeline/documentconsumer.h"

#include <array>
#include <atomic>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/text.h"
#include "devkit/pipeline/partfactory.h"
#include "devkit/pipeline/partobject.h"
#include "devkit/pipeline/runobserver.h"
#include "platform/bstr.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

struct CreatableKind {
    const IID& iid;
    PartKind kind;
};

// The interfaces that the platform's documentation permits for a new part, and the remaining ones of the
// parts of a page; Unknown for any other.
PartKind CreatableKindOf(REFIID iid) {
    const std::array<CreatableKind, 9> kinds{
        {{__uuidof(IFixedDocument), PartKind::FixedDocument},
         {__uuidof(IFixedPage), PartKind::FixedPage},
         {__uuidof(IPartImage), PartKind::Image},
         {__uuidof(IPartThumbnail), PartKind::Thumbnail},
         {__uuidof(IPartFont), PartKind::Font},
         {__uuidof(IPartFont2), PartKind::Font},
         {__uuidof(IPartPrintTicket), PartKind::PrintTicket},
         {__uuidof(IPartColorProfile), PartKind::ColorProfile},
         {__uuidof(IPartResourceDictionary), PartKind::ResourceDictionary}}};
    for (const CreatableKind& creatable : kinds) {
        if (IsEqualIID(creatable.iid, iid)) return creatable.kind;
    }
    return PartKind::Unknown;
}

bool HasSendMethod(PartKind kind) {
    return kind == PartKind::XpsDocument || kind == PartKind::FixedDocumentSequence ||
           kind == PartKind::FixedDocument || kind == PartKind::FixedPage;
}

// Whether the filter did anything with a part that it made.
bool IsUsed(const PartPtr& part) { return part->attached || part->sent; }

// The name of an object of the filter's own, where it has one.
std::string NameOfForeign(IUnknown* pObject) {
    ComPtr<IPartBase> base;
    if (FAILED(pObject->QueryInterface(__uuidof(IPartBase), base.PutVoid()))) return {};
    BSTR uri = nullptr;
    if (FAILED(base->GetUri(&uri))) return {};
    return platform::ToUtf8(platform::Bstr::Adopt(uri).View());
}

}  // namespace

DocumentConsumer::DocumentConsumer(ContextPtr context, std::shared_ptr<PartChannel> next)
    : ComObject(std::move(context), "DocumentConsumer"), m_next(std::move(next)) {}

SentParts DocumentConsumer::Sent() const {
    const std::lock_guard guard(m_lock);
    return m_sent;
}

SentParts DocumentConsumer::TakeSent() {
    const std::lock_guard guard(m_lock);
    return std::exchange(m_sent, {});
}

std::vector<std::string> DocumentConsumer::Unattached() const {
    const std::lock_guard guard(m_lock);
    std::vector<std::string> titles;
    for (const PartPtr& part : m_made) {
        if (!IsUsed(part)) titles.push_back(part->Title());
    }
    return titles;
}

bool DocumentConsumer::IsClosed() const {
    const std::lock_guard guard(m_lock);
    return m_closed;
}

void DocumentConsumer::ReleaseForeignParts() {
    std::vector<ComPtr<IUnknown>> foreign;
    const std::lock_guard guard(m_lock);
    foreign.swap(m_foreign);
}

HRESULT DocumentConsumer::QueryInterface(REFIID iid, void** ppObject) {
    if (Context().GetBehaviour().writer == StreamKind::Unrecognised && !IsEqualIID(iid, __uuidof(IUnknown))) {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        return E_NOINTERFACE;
    }
    return ComObject::QueryInterface(iid, ppObject);
}

HRESULT DocumentConsumer::SendXpsUnknown(IUnknown* pUnknown) {
    return Send("SendXpsUnknown", PartKind::Unknown, pUnknown);
}

HRESULT DocumentConsumer::SendXpsDocument(IXpsDocument* pXpsDocument) {
    return Send("SendXpsDocument", PartKind::XpsDocument, pXpsDocument);
}

HRESULT DocumentConsumer::SendFixedDocumentSequence(IFixedDocumentSequence* pFixedDocumentSequence) {
    return Send("SendFixedDocumentSequence", PartKind::FixedDocumentSequence, pFixedDocumentSequence);
}

HRESULT DocumentConsumer::SendFixedDocument(IFixedDocument* pFixedDocument) {
    return Send("SendFixedDocument", PartKind::FixedDocument, pFixedDocument);
}

HRESULT DocumentConsumer::SendFixedPage(IFixedPage* pFixedPage) {
    return Send("SendFixedPage", PartKind::FixedPage, pFixedPage);
}

HRESULT DocumentConsumer::CloseSender() {
    return Answer([&]() -> HRESULT {
        const std::lock_guard guard(m_lock);
        const bool closedBefore = std::exchange(m_closed, true);
        if (const HRESULT hr = Context().Calls().Enter("IXpsDocumentConsumer::CloseSender"); FAILED(hr))
            return hr;
        if (closedBefore && !Context().IsCancelled())
            return Context().Breach(Check::SenderOnce, "CloseSender was called twice");
        // The next filter learns of the end when this one has ended well; after a failure it is cut off.
        return S_OK;
    });
}

HRESULT DocumentConsumer::GetNewEmptyPart(const wchar_t* uri, REFIID iid, void** ppNewPart,
                                          IPrintWriteStream** ppWriteStream) {
    if (ppNewPart != nullptr) *ppNewPart = nullptr;
    if (ppWriteStream != nullptr) *ppWriteStream = nullptr;
    return Answer([&]() -> HRESULT {
        const std::lock_guard guard(m_lock);
        const std::string name = common::Utf8OrNull(uri);
        const HRESULT planned = Context().Calls().Enter("IXpsDocumentConsumer::GetNewEmptyPart", name);
        if (FAILED(planned)) return planned;
        if (const HRESULT hr = CheckOpen("GetNewEmptyPart of " + name); FAILED(hr)) return hr;
        if (uri == nullptr || ppNewPart == nullptr || ppWriteStream == nullptr) {
            return Context().Breach(Check::NullArgument, "GetNewEmptyPart was called with a null pointer",
                                    E_POINTER);
        }
        const PartKind kind = CreatableKindOf(iid);
        if (kind == PartKind::Unknown) {
            return Context().Breach(Check::NewKind,
                                    "GetNewEmptyPart of " + name + " asks for " + common::TextOf(iid) +
                                        ", which is not the interface of a part that it makes",
                                    E_NOINTERFACE);
        }
        const PartPtr part = std::make_shared<Part>(kind, name);
        ComPtr<WriteStream> stream = MakeObject<WriteStream>(SharedContext(), name, part->BeginWriting());
        const HRESULT hr = MakePartObject(SharedContext(), part)->QueryInterface(iid, ppNewPart);
        if (FAILED(hr)) return hr;
        *ppWriteStream = stream.Detach();
        m_made.push_back(part);
        return hr;
    });
}

HRESULT DocumentConsumer::Send(const char* method, PartKind kind, IUnknown* pObject) {
    return Answer([&]() -> HRESULT {
        const PartPtr part = PartOf(pObject);
        const HRESULT hr = Take(method, kind, pObject, part);
        if (FAILED(hr) || m_next == nullptr) return hr;
        // Without the lock: the channel may have to wait for room.
        if (part == nullptr) {
            m_next->Put(ComPtr<IUnknown>(pObject));
        } else {
            m_next->Put(part);
        }
        return hr;
    });
}

HRESULT DocumentConsumer::Take(const char* method, PartKind kind, IUnknown* pObject, const PartPtr& part) {
    const std::lock_guard guard(m_lock);
    const std::string title = part == nullptr ? "an object of the filter's own" : part->Title();
    const HRESULT planned = Context().Calls().Enter(std::string("IXpsDocumentConsumer::") + method,
                                                    part == nullptr ? std::string() : part->Name());
    if (FAILED(planned)) return planned;
    if (pObject == nullptr) {
        return Context().Breach(Check::NullArgument, std::string(method) + " was called with a null pointer",
                                E_POINTER);
    }
    if (const HRESULT hr = CheckOpen(std::string(method) + " of " + title); FAILED(hr)) return hr;
    if (kind == PartKind::Unknown ? part != nullptr && HasSendMethod(part->Kind())
                                  : part == nullptr || part->Kind() != kind) {
        return Context().Breach(Check::Kind, std::string(method) + " was given " + title, E_INVALIDARG);
    }
    if (part == nullptr) {
        // The next filter holds its own reference, if there is one.
        if (m_next == nullptr) m_foreign.emplace_back(pObject);
        m_sent.push_back({PartKind::Unknown, NameOfForeign(pObject), nullptr});
        Context().Observer()->PartSent(m_sent.back());
        return S_OK;
    }
    if (part->sent) return Context().Breach(Check::SentOnce, part->Title() + " was sent twice");
    if (const HRESULT hr = CheckOrder(kind, title); FAILED(hr)) return hr;
    if (const HRESULT hr = CheckWhole(*part); FAILED(hr)) return hr;
    Record(kind, part);
    return S_OK;
}

HRESULT DocumentConsumer::CheckOpen(const std::string& what) {
    if (Context().IsCancelled()) return kJobCancelled;
    return m_closed ? Context().Breach(Check::AfterClose, what + " came after CloseSender") : S_OK;
}

HRESULT DocumentConsumer::CheckOrder(PartKind kind, const std::string& title) {
    switch (kind) {
        case PartKind::XpsDocument:
            return m_counts.documents == 0
                       ? S_OK
                       : Context().Breach(Check::OneDocument, "a second XpsDocument was sent");
        case PartKind::FixedDocumentSequence:
            if (m_counts.documents == 0)
                return Context().Breach(Check::OrderDocument, title + " was sent before the XpsDocument");
            return m_counts.sequences == 0
                       ? S_OK
                       : Context().Breach(Check::OneSequence, "a second FixedDocumentSequence was sent");
        case PartKind::FixedDocument:
            return m_counts.sequences == 0
                       ? Context().Breach(Check::OrderSequence,
                                          title + " was sent before the FixedDocumentSequence")
                       : S_OK;
        case PartKind::FixedPage:
            return m_counts.fixedDocuments == 0
                       ? Context().Breach(Check::OrderPage, title + " was sent before any FixedDocument")
                       : S_OK;
        default:
            return S_OK;
    }
}

HRESULT DocumentConsumer::CheckWhole(Part& part) {
    if (part.IsBeingWritten())
        return Context().Breach(Check::OpenWhenSent,
                                part.Title() + " was sent while its write stream is open");
    return S_OK;
}

void DocumentConsumer::Record(PartKind kind, const PartPtr& part) {
    part->sent = true;
    m_counts.documents += kind == PartKind::XpsDocument;
    m_counts.sequences += kind == PartKind::FixedDocumentSequence;
    m_counts.fixedDocuments += kind == PartKind::FixedDocument;
    m_sent.push_back({kind, part->Name(), part});
    Context().Observer()->PartSent(m_sent.back());
    Settle(*part);
    LetGoOfEarlier();
}

// What was written is needed next when the output is; the ticket that a page had, only where the next filter
// is told of it.
void DocumentConsumer::Settle(Part& part) {
    const bool isReplaced = part.ticket != nullptr && part.ticket != part.inputTicket;
    if (isReplaced && m_next == nullptr) part.inputTicket = nullptr;
    try {
        part.PutAside(Context().Store());
        if (part.ticket != nullptr) part.ticket->PutAside(Context().Store());
        if (part.thumbnail != nullptr) part.thumbnail->PutAside(Context().Store());
        for (const PartPtr& resource : part.resources) resource->PutAside(Context().Store());
    } catch (const common::StorageError& failure) {
        Context().StorageFailed(failure.what());
    }
}

// Of a page that comes from the input only its place is kept and what was made of it, so that a long job
// takes little memory. A filter may hold on to what it has just sent; what it holds longer than that is kept.
void DocumentConsumer::LetGoOfEarlier() {
    constexpr std::size_t kPatience = 256;
    std::erase_if(m_made, IsUsed);
    if (m_sent.size() <= kPatience) return;
    SentPart& sent = m_sent[m_sent.size() - 1 - kPatience];
    if (sent.part == nullptr || sent.part.use_count() != 1) return;
    // Whoever let go of it last may have been another thread.
    std::atomic_thread_fence(std::memory_order_acquire);
    std::optional<PageChange> change = sent.part->FinalChange();
    if (!change) return;
    const bool isChanged = !change->IsNone();
    sent = {sent.kind,
            {},
            nullptr,
            sent.part->place,
            isChanged ? std::make_shared<const PageChange>(std::move(*change)) : nullptr};
}

}  // namespace devkit::pipeline
