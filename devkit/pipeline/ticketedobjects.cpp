#include "devkit/pipeline/ticketedobjects.h"

#include "devkit/pipeline/resourceobjects.h"

namespace devkit::pipeline {

HRESULT XpsDocumentObject::GetThumbnail(IPartThumbnail** ppThumbnail) {
    if (ppThumbnail != nullptr) *ppThumbnail = nullptr;
    return Call("IXpsDocument::GetThumbnail", [&] {
        return GetResourceObject(SharedContext(), m_part->thumbnail, __uuidof(IPartThumbnail),
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
                Check::ForeignThumbnail,
                "SetThumbnail was given an object that is not one of the pipeline's thumbnails",
                E_INVALIDARG);
        }
        if (thumbnail->IsBeingWritten()) {
            return Context().Breach(Check::OpenWhenAttached, "SetThumbnail was given " + thumbnail->Title() +
                                                                 " while its write stream is open");
        }
        m_part->thumbnail = thumbnail;
        thumbnail->attached = true;
        return S_OK;
    });
}

}  // namespace devkit::pipeline
