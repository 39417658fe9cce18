#include "devkit/pipeline/documentprovider.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "devkit/pipeline/partfactory.h"
#include "devkit/pipeline/runobserver.h"

namespace devkit::pipeline {

using platform::ComPtr;

DocumentProvider::DocumentProvider(ContextPtr context, std::shared_ptr<PartSource> source,
                                   std::vector<ExtraPart> extraParts, std::function<void(unsigned)> onAsked)
    : ComObject(std::move(context), "DocumentProvider"),
      m_source(std::move(source)),
      m_extraParts(std::move(extraParts)),
      m_onAsked(std::move(onAsked)) {}

std::string DocumentProvider::LastGiven() const {
    const std::lock_guard guard(m_lock);
    return m_lastGiven;
}

HRESULT DocumentProvider::QueryInterface(REFIID iid, void** ppObject) {
    if (Context().GetBehaviour().reader == StreamKind::Unrecognised && !IsEqualIID(iid, __uuidof(IUnknown))) {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        return E_NOINTERFACE;
    }
    return ComObject::QueryInterface(iid, ppObject);
}

HRESULT DocumentProvider::GetXpsPart(IUnknown** ppPart) {
    if (ppPart == nullptr) return E_POINTER;
    *ppPart = nullptr;
    return Answer([&]() -> HRESULT {
        if (m_onAsked != nullptr) m_onAsked(++m_asked);
        if (const HRESULT hr = Context().Calls().Enter("IXpsDocumentProvider::GetXpsPart"); FAILED(hr))
            return hr;
        const Behaviour& behaviour = Context().GetBehaviour();
        Context().Used("slow-part");
        if (behaviour.slowPart.count() > 0) Context().WaitUnlessCancelled(behaviour.slowPart);
        if (Context().IsCancelled()) {
            Context().Used("after-cancel");
            if (behaviour.afterCancel == AfterCancel::FailGetXpsPart) return kJobCancelled;
            if (behaviour.afterCancel == AfterCancel::EndOfParts) return S_OK;
        }
        return GiveNext(ppPart);
    });
}

HRESULT DocumentProvider::GiveNext(IUnknown** ppPart) {
    const unsigned number = m_next++;
    const auto extra = std::ranges::find(m_extraParts, number, &ExtraPart::before);
    if (extra != m_extraParts.end()) {
        *ppPart = extra->make(SharedContext()).Detach();
        m_extraParts.erase(extra);
        --m_next;
        SetLastGiven("an extra part");
        return S_OK;
    }
    std::optional<GivenPart> given = m_source->Next();
    // The filter before this one is cut off, and this one with it.
    if (!given) return kJobCancelled;
    SetLastGiven(given->IsEnd()           ? "the end of the parts"
                 : given->part == nullptr ? "an object"
                                          : given->part->Title());
    if (given->IsEnd()) {
        --m_next;
    } else {
        *ppPart = ObjectOf(std::move(*given)).Detach();
    }
    return S_OK;
}

ComPtr<IUnknown> DocumentProvider::ObjectOf(GivenPart given) const {
    if (given.part == nullptr) return std::move(given.foreign);
    const bool isDocument = given.part->Kind() == PartKind::XpsDocument;
    if (isDocument) Context().Used("ambiguous-document");
    const bool isAmbiguous = isDocument && Context().GetBehaviour().ambiguousDocument;
    return isAmbiguous ? MakeAmbiguousDocument(SharedContext(), given.part)
                       : MakePartObject(SharedContext(), given.part);
}

void DocumentProvider::SetLastGiven(std::string text) {
    Context().Observer()->PartGiven(text);
    const std::lock_guard guard(m_lock);
    m_lastGiven = std::move(text);
}

}  // namespace devkit::pipeline
