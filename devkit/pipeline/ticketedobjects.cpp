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

}  // namespace devkit::pipeline
