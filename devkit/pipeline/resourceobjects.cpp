#include "devkit/pipeline/resourceobjects.h"

#include "devkit/pipeline/text.h"

namespace devkit::pipeline {
namespace {

constexpr const char* plainFont = "application/vnd.ms-opentype";
constexpr const char* obfuscatedFont = "application/vnd.ms-package.obfuscated-opentype";

HRESULT SetContentTypeOf(Part& part, const wchar_t* contentType) {
    if (contentType == nullptr) return E_INVALIDARG;
    part.SetContentType(Narrow(contentType));
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
        *pOptions = EqualIgnoringCase(m_part->ContentType(), obfuscatedFont) ? Font_Obfusticate : Font_Normal;
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
        m_part->SetContentType(options == Font_Obfusticate ? obfuscatedFont : plainFont);
        return S_OK;
    });
}

HRESULT FontObject::GetFontRestriction(EXpsFontRestriction* pRestriction) {
    return Call("IPartFont2::GetFontRestriction", [&]() -> HRESULT {
        if (pRestriction == nullptr) return E_POINTER;
        *pRestriction = Xps_Restricted_Font_Installable;
        return S_OK;
    });
}

}  // namespace devkit::pipeline
