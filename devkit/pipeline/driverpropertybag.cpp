#include "devkit/pipeline/driverpropertybag.h"

#include <utility>

#include "devkit/pipeline/boundary.h"
#include "devkit/pipeline/text.h"
#include "platform/bstr.h"

namespace devkit::pipeline {

DriverPropertyBag::DriverPropertyBag(ContextPtr context, DriverValues values)
    : ComObject(std::move(context), "DriverPropertyBag"), m_values(std::move(values)) {}

template <typename Value>
HRESULT DriverPropertyBag::Find(const char* method, BSTR name, const Value** ppValue) {
    *ppValue = nullptr;
    if (const HRESULT hr = Context().Calls().Enter(method, NarrowOrNull(name)); FAILED(hr)) return hr;
    const auto found =
        m_values.find(name == nullptr ? std::wstring() : std::wstring(name, SysStringLen(name)));
    if (found == m_values.end()) return E_ELEMENT_NOT_FOUND;
    *ppValue = std::get_if<Value>(&found->second);
    return *ppValue == nullptr ? E_ELEMENT_NOT_FOUND : S_OK;
}

HRESULT DriverPropertyBag::GetBool(BSTR name, BOOL* pValue) {
    if (pValue == nullptr) return E_POINTER;
    *pValue = FALSE;
    return Guarded([&] {
        const bool* value = nullptr;
        const HRESULT hr = Find("IPrinterPropertyBag::GetBool", name, &value);
        if (SUCCEEDED(hr)) *pValue = *value ? TRUE : FALSE;
        return hr;
    });
}

HRESULT DriverPropertyBag::GetInt32(BSTR name, LONG* pValue) {
    if (pValue == nullptr) return E_POINTER;
    *pValue = 0;
    return Guarded([&] {
        const LONG* value = nullptr;
        const HRESULT hr = Find("IPrinterPropertyBag::GetInt32", name, &value);
        if (SUCCEEDED(hr)) *pValue = *value;
        return hr;
    });
}

HRESULT DriverPropertyBag::GetString(BSTR name, BSTR* pValue) {
    if (pValue == nullptr) return E_POINTER;
    *pValue = nullptr;
    return Guarded([&] {
        const std::wstring* value = nullptr;
        const HRESULT hr = Find("IPrinterPropertyBag::GetString", name, &value);
        if (SUCCEEDED(hr)) *pValue = platform::Bstr(*value).Detach();
        return hr;
    });
}

HRESULT DriverPropertyBag::SetBool(BSTR, BOOL) { return E_NOTIMPL; }
HRESULT DriverPropertyBag::SetInt32(BSTR, LONG) { return E_NOTIMPL; }
HRESULT DriverPropertyBag::SetString(BSTR, BSTR) { return E_NOTIMPL; }
HRESULT DriverPropertyBag::SetBytes(BSTR, DWORD, BYTE*) { return E_NOTIMPL; }

HRESULT DriverPropertyBag::GetBytes(BSTR, DWORD* pcbValue, BYTE** ppValue) {
    if (pcbValue != nullptr) *pcbValue = 0;
    if (ppValue != nullptr) *ppValue = nullptr;
    return E_NOTIMPL;
}

HRESULT DriverPropertyBag::GetReadStream(BSTR, IStream** ppStream) {
    if (ppStream != nullptr) *ppStream = nullptr;
    return E_NOTIMPL;
}

HRESULT DriverPropertyBag::GetWriteStream(BSTR, IStream** ppStream) {
    if (ppStream != nullptr) *ppStream = nullptr;
    return E_NOTIMPL;
}

HRESULT DriverPropertyBag::GetTypeInfoCount(UINT* pCount) {
    if (pCount == nullptr) return E_POINTER;
    *pCount = 0;
    return S_OK;
}

HRESULT DriverPropertyBag::GetTypeInfo(UINT, LCID, ITypeInfo** ppInfo) {
    if (ppInfo != nullptr) *ppInfo = nullptr;
    return E_NOTIMPL;
}

HRESULT DriverPropertyBag::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) { return E_NOTIMPL; }

HRESULT DriverPropertyBag::Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) {
    return E_NOTIMPL;
}

}  // namespace devkit::pipeline
