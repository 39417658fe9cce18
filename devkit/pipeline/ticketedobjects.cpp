#include "devkit/pipeline/ticketedobjects.h"

namespace devkit::pipeline {

HRESULT GetTicketOf(const ContextPtr& context, const Part& part, IPartPrintTicket** ppPrintTicket) {
    return GetObjectOf(context, part.ticket, __uuidof(IPartPrintTicket),
                       reinterpret_cast<void**>(ppPrintTicket));
}

HRESULT XpsDocumentObject::GetThumbnail(IPartThumbnail** ppThumbnail) {
    if (ppThumbnail != nullptr) *ppThumbnail = nullptr;
    return Call("IXpsDocument::GetThumbnail", [&] {
        return GetObjectOf(SharedContext(), m_part->thumbnail, __uuidof(IPartThumbnail),
                           reinterpret_cast<void**>(ppThumbnail));
    });
}

HRESULT XpsDocumentObject::SetThumbnail(IPartThumbnail* pThumbnail) {
    return Call("IXpsDocument::SetThumbnail", [&]() -> HRESULT {
        if (const HRESULT hr = CheckNotSent("SetThumbnail"); FAILED(hr)) return hr;
        if (pThumbnail == nullptr) return E_POINTER;
        const PartPtr thumbnail = PartOf(pThumbnail);
        if (thumbnail == nullptr || thumbnail->Kind() != PartKind::Thumbnail) {
            return Context().Breach(
                "SetThumbnail was given an object that is not one of the pipeline's thumbnails",
                E_INVALIDARG);
        }
        if (thumbnail->IsBeingWritten()) {
            return Context().Breach("SetThumbnail was given " + thumbnail->Title() +
                                    " while its write stream is open");
        }
        m_part->thumbnail = thumbnail;
        return S_OK;
    });
}

HRESULT AmbiguousDocumentObject::QueryInterface(REFIID iid, void** ppObject) {
    const HRESULT hr = XpsDocumentObject::QueryInterface(iid, ppObject);
    if (hr != E_NOINTERFACE) return hr;
    return Guarded([&]() -> HRESULT {
        for (const PartKind kind :
             {PartKind::FixedDocumentSequence, PartKind::FixedDocument, PartKind::FixedPage}) {
            const auto other = MakePartObject(SharedContext(), std::make_shared<Part>(kind, "/ambiguous"));
            if (SUCCEEDED(other->QueryInterface(iid, ppObject))) return S_OK;
        }
        return E_NOINTERFACE;
    });
}

}  // namespace devkit::pipeline
