#include "devkit/pipeline/resourceobjects.h"

#include "devkit/common/text.h"
#include "devkit/pipeline/fontobfuscation.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

HRESULT SetContentTypeOf(Part& part, const wchar_t* contentType) {
    if (contentType == nullptr) return E_INVALIDARG;
    part.SetContentType(platform::ToUtf8(contentType));
    return S_OK;
}

}  // namespace

HRESULT ImageObject::GetImageProperties(BSTR* pContentType) {
    return Call("IPartImage::GetImageProperties", [&] { return GetContentTypeOf(*m_part, pContentType); });
}

HRESULT ImageObject::SetImageContent(const wchar_t* contentType) {
    return Call("IPartImage::SetImageContent", [&]() -> HRESULT {
        if (const HRESULT hr = CheckNotSent("SetImageContent"); FAILED(hr)) return hr;
        return SetContentTypeOf(*m_part, contentType);
    });
}

HRESULT ThumbnailObject::GetThumbnailProperties(BSTR* pContentType) {
    return Call("IPartThumbnail::GetThumbnailProperties",
                [&] { return GetContentTypeOf(*m_part, pContentType); });
}

HRESULT ThumbnailObject::SetThumbnailContent(const wchar_t* contentType) {
    return Call("IPartThumbnail::SetThumbnailContent", [&]() -> HRESULT {
        if (const HRESULT hr = CheckNotSent("SetThumbnailContent"); FAILED(hr)) return hr;
        return SetContentTypeOf(*m_part, contentType);
    });
}

HRESULT FontObject::GetFontProperties(BSTR* pContentType, EXpsFontOptions* pOptions) {
    if (pContentType != nullptr) *pContentType = nullptr;
    return Call("IPartFont::GetFontProperties", [&]() -> HRESULT {
        if (pOptions == nullptr) return E_POINTER;
        *pOptions = common::EqualIgnoringCase(m_part->ContentType(), kObfuscatedFont) ? Font_Obfusticate
                                                                                      : Font_Normal;
        return GetContentTypeOf(*m_part, pContentType);
    });
}

HRESULT FontObject::SetFontContent(const wchar_t* contentType) {
    return Call("IPartFont::SetFontContent", [&]() -> HRESULT {
        if (const HRESULT hr = CheckNotSent("SetFontContent"); FAILED(hr)) return hr;
        return SetContentTypeOf(*m_part, contentType);
    });
}

HRESULT FontObject::SetFontOptions(EXpsFontOptions options) {
    return Call("IPartFont::SetFontOptions", [&]() -> HRESULT {
        if (const HRESULT hr = CheckNotSent("SetFontOptions"); FAILED(hr)) return hr;
        if (options != Font_Normal && options != Font_Obfusticate) return E_INVALIDARG;
        m_part->obfuscate = options == Font_Obfusticate;
        m_part->SetContentType(std::string(m_part->obfuscate ? kObfuscatedFont : kPlainFont));
        if (!m_part->obfuscate || IsNamedByGuid(m_part->Name())) return S_OK;
        return Context().Breach(
            Check::FontName,
            "SetFontOptions obfuscates " + m_part->Title() + ", whose name holds no GUID to do it with",
            S_OK);
    });
}

HRESULT FontObject::GetFontRestriction(EXpsFontRestriction* pRestriction) {
    return Call("IPartFont2::GetFontRestriction", [&]() -> HRESULT {
        if (pRestriction == nullptr) return E_POINTER;
        *pRestriction = Xps_Restricted_Font_Installable;
        return S_OK;
    });
}

platform::ComPtr<IUnknown> MakeResourceObject(const ContextPtr& context, const PartPtr& part) {
    switch (part->Kind()) {
        case PartKind::PrintTicket:
            return MakeIdentity<PrintTicketObject>(context, part);
        case PartKind::Image:
            return MakeIdentity<ImageObject>(context, part);
        case PartKind::Font:
            return MakeIdentity<FontObject>(context, part);
        case PartKind::ColorProfile:
            return MakeIdentity<ColorProfileObject>(context, part);
        case PartKind::ResourceDictionary:
            return MakeIdentity<ResourceDictionaryObject>(context, part);
        case PartKind::Thumbnail:
            return MakeIdentity<ThumbnailObject>(context, part);
        default:
            return MakeIdentity<UnknownPartObject>(context, part);
    }
}

HRESULT GetResourceObject(const ContextPtr& context, const PartPtr& part, REFIID iid, void** ppObject) {
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    if (part == nullptr) {
        context->Used("missing-ticket");
        return context->GetBehaviour().missingPart == MissingPart::NotFound ? E_ELEMENT_NOT_FOUND : S_OK;
    }
    return MakeResourceObject(context, part)->QueryInterface(iid, ppObject);
}

HRESULT GetTicketOf(const ContextPtr& context, const Part& part, IPartPrintTicket** ppPrintTicket) {
    return GetResourceObject(context, part.ticket, __uuidof(IPartPrintTicket),
                             reinterpret_cast<void**>(ppPrintTicket));
}

HRESULT AttachTicket(RunContext& context, Part& target, IPartPrintTicket* pPrintTicket) {
    if (pPrintTicket == nullptr) return E_POINTER;
    const PartPtr ticket = PartOf(pPrintTicket);
    if (ticket == nullptr || ticket->Kind() != PartKind::PrintTicket) {
        return context.Breach(Check::ForeignTicket,
                              "SetPrintTicket of " + target.Title() +
                                  " was given an object that is not one of the pipeline's print tickets",
                              E_INVALIDARG);
    }
    if (ticket->IsBeingWritten()) {
        return context.Breach(Check::OpenWhenAttached, "SetPrintTicket of " + target.Title() + " was given " +
                                                           ticket->Title() +
                                                           " while its write stream is open");
    }
    target.ticket = ticket;
    ticket->attached = true;
    return S_OK;
}

}  // namespace devkit::pipeline
