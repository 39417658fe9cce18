#include "devkit/msxml/comtext.h"

namespace devkit::msxml {

HRESULT ReturnText(std::wstring_view text, BSTR* pOut) noexcept {
    if (pOut == nullptr) return E_INVALIDARG;
    *pOut = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *pOut == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT ReturnText(std::wstring_view text, VARIANT* pOut) noexcept {
    if (pOut == nullptr) return E_INVALIDARG;
    VariantInit(pOut);
    BSTR copy = nullptr;
    const HRESULT result = ReturnText(text, &copy);
    if (FAILED(result)) return result;
    pOut->vt = VT_BSTR;
    pOut->bstrVal = copy;
    return S_OK;
}

HRESULT ReturnNoText(BSTR* pOut) noexcept {
    if (pOut == nullptr) return E_INVALIDARG;
    *pOut = nullptr;
    return S_FALSE;
}

HRESULT ReturnNoText(VARIANT* pOut) noexcept {
    if (pOut == nullptr) return E_INVALIDARG;
    VariantInit(pOut);
    pOut->vt = VT_NULL;
    return S_FALSE;
}

}  // namespace devkit::msxml
