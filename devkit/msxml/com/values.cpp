#include "devkit/msxml/com/values.h"

#include "devkit/msxml/com/answer.h"

namespace devkit::msxml {

namespace {

// OLE Automation only reads its sources, whatever some of its declarations say.
VARIANT* Source(const VARIANT& value) noexcept { return const_cast<VARIANT*>(&value); }

}  // namespace

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

HRESULT ReturnTextIfAny(std::wstring_view text, BSTR* pOut) noexcept {
    return text.empty() ? ReturnNoText(pOut) : ReturnText(text, pOut);
}

HRESULT ReturnNumber(long number, long* pOut) noexcept {
    if (pOut == nullptr) return E_INVALIDARG;
    *pOut = number;
    return S_OK;
}

HRESULT ReturnFlag(bool flag, VARIANT_BOOL* pOut) noexcept {
    if (pOut == nullptr) return E_INVALIDARG;
    *pOut = flag ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

void Convert(const VARIANT& value, VARTYPE type, platform::Variant& target) {
    common::ThrowIfFailed(VariantChangeTypeEx(target.Put(), Source(value), LOCALE_INVARIANT, 0, type));
}

void CopyDirect(const VARIANT& value, platform::Variant& target) {
    if ((value.vt & VT_BYREF) != 0 && value.byref == nullptr) throw common::HresultError(E_INVALIDARG);
    common::ThrowIfFailed(VariantCopyInd(target.Put(), Source(value)));
}

std::wstring TextOf(const VARIANT& value) {
    if (value.vt == VT_BSTR) return std::wstring(View(value.bstrVal));
    platform::Variant text;
    Convert(value, VT_BSTR, text);
    return std::wstring(View(text.Text()));
}

}  // namespace devkit::msxml
