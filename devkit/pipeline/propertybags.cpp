#include "devkit/pipeline/propertybags.h"

#include <system_error>
#include <utility>

#include "devkit/common/text.h"
#include "platform/bstr.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

// `target` is overwritten, not cleared.
HRESULT CopyValue(const VARIANT& value, VARIANT& target) {
    VariantInit(&target);
    if (value.vt == VT_BYREF) {
        target = value;
        return S_OK;
    }
    // MinGW declares the source without const; it is only read.
    return VariantCopy(&target, const_cast<VARIANT*>(&value));
}

}  // namespace

PropertyBag::PropertyBag(ContextPtr context) : ComObject(std::move(context), "PropertyBag") {}

void PropertyBag::Put(std::wstring_view name, const VARIANT& value) {
    const HRESULT hr = Store(name, value, true);
    if (FAILED(hr)) throw std::system_error(hr, std::system_category(), "property " + platform::ToUtf8(name));
}

void PropertyBag::PutValue(std::wstring_view name, const PropertyValue& value) {
    platform::Variant variant;
    if (const auto* const pText = std::get_if<std::wstring>(&value))
        return Put(name, platform::Variant(*pText).Get());
    VARIANT& target = *variant.Put();
    if (const auto* const pFlag = std::get_if<bool>(&value)) {
        target.vt = VT_BOOL;
        target.boolVal = *pFlag ? VARIANT_TRUE : VARIANT_FALSE;
    } else if (const auto* const pNumber = std::get_if<LONG>(&value)) {
        target.vt = VT_I4;
        target.lVal = *pNumber;
    } else {
        target.vt = VT_UI4;
        target.ulVal = std::get<ULONG>(value);
    }
    Put(name, target);
}

void PropertyBag::PutHandle(std::wstring_view name, HANDLE handle) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BYREF;
    value.byref = handle;
    Put(name, value);
}

HRESULT PropertyBag::AddProperty(const wchar_t* name, const VARIANT* value) {
    return Answer([&]() -> HRESULT {
        if (const HRESULT hr =
                Context().Calls().Enter("IPrintPipelinePropertyBag::AddProperty", common::Utf8OrNull(name));
            FAILED(hr)) {
            return hr;
        }
        if (name == nullptr || value == nullptr) return E_INVALIDARG;
        return Store(name, *value, false);
    });
}

HRESULT PropertyBag::Store(std::wstring_view name, const VARIANT& value, bool isPipelines) {
    VARIANT copy;
    const HRESULT hr = CopyValue(value, copy);
    if (FAILED(hr)) return hr;
    const std::lock_guard guard(m_lock);
    Entry& entry = m_values[std::wstring(name)];
    *entry.value.Put() = copy;
    const bool wasPipelines = std::exchange(entry.isPipelines, isPipelines);
    if (wasPipelines && !isPipelines)
        Context().Found(Check::PropertyReplaced,
                        "AddProperty replaces " + platform::ToUtf8(name) + ", which is the pipeline's");
    return S_OK;
}

HRESULT PropertyBag::GetProperty(const wchar_t* name, VARIANT* value) {
    if (value != nullptr) VariantInit(value);
    return Answer([&]() -> HRESULT {
        if (const HRESULT hr =
                Context().Calls().Enter("IPrintPipelinePropertyBag::GetProperty", common::Utf8OrNull(name));
            FAILED(hr)) {
            return hr;
        }
        if (name == nullptr || value == nullptr) return E_INVALIDARG;
        const std::lock_guard guard(m_lock);
        const auto found = m_values.find(std::wstring_view(name));
        if (found != m_values.end()) return CopyValue(found->second.value.Get(), *value);
        Context().Missing("property " + platform::ToUtf8(name));
        return kPropertyMissing;
    });
}

BOOL PropertyBag::DeleteProperty(const wchar_t* name) {
    const CallTime time = PipelineTime();
    Context().Calls().Note("IPrintPipelinePropertyBag::DeleteProperty", common::Utf8OrNull(name));
    if (name == nullptr) return FALSE;
    const std::lock_guard guard(m_lock);
    const auto found = m_values.find(std::wstring_view(name));
    if (found == m_values.end()) return FALSE;
    if (found->second.isPipelines && found->first != L"ProgressReport")
        Context().Found(Check::PropertyRemoved,
                        "DeleteProperty removes " + platform::ToUtf8(name) + ", which is the pipeline's");
    m_values.erase(found);
    return TRUE;
}

DriverBag::DriverBag(ContextPtr context, std::string name, DriverValues values)
    : ComObject(std::move(context), name), m_name(std::move(name)), m_values(std::move(values)) {}

template <typename Value>
HRESULT DriverBag::Find(const char* method, BSTR name, const Value** ppValue) {
    *ppValue = nullptr;
    if (const HRESULT hr = Context().Calls().Enter(method, common::Utf8OrNull(name)); FAILED(hr)) return hr;
    const auto found =
        m_values.find(name == nullptr ? std::wstring() : std::wstring(name, SysStringLen(name)));
    if (found != m_values.end()) *ppValue = std::get_if<Value>(&found->second);
    if (*ppValue != nullptr) return S_OK;
    Context().Missing("property " + common::Utf8OrNull(name) + " of " + m_name);
    return E_ELEMENT_NOT_FOUND;
}

HRESULT DriverBag::GetBool(BSTR name, BOOL* pValue) {
    if (pValue == nullptr) return E_POINTER;
    *pValue = FALSE;
    return Answer([&] {
        const bool* value = nullptr;
        const HRESULT hr = Find("IPrinterPropertyBag::GetBool", name, &value);
        if (SUCCEEDED(hr)) *pValue = *value ? TRUE : FALSE;
        return hr;
    });
}

HRESULT DriverBag::GetInt32(BSTR name, LONG* pValue) {
    if (pValue == nullptr) return E_POINTER;
    *pValue = 0;
    return Answer([&] {
        const LONG* value = nullptr;
        const HRESULT hr = Find("IPrinterPropertyBag::GetInt32", name, &value);
        if (SUCCEEDED(hr)) *pValue = *value;
        return hr;
    });
}

HRESULT DriverBag::GetString(BSTR name, BSTR* pValue) {
    if (pValue == nullptr) return E_POINTER;
    *pValue = nullptr;
    return Answer([&] {
        const std::wstring* value = nullptr;
        const HRESULT hr = Find("IPrinterPropertyBag::GetString", name, &value);
        if (SUCCEEDED(hr)) *pValue = platform::Bstr(*value).Detach();
        return hr;
    });
}

HRESULT DriverBag::SetBool(BSTR, BOOL) { return E_NOTIMPL; }
HRESULT DriverBag::SetInt32(BSTR, LONG) { return E_NOTIMPL; }
HRESULT DriverBag::SetString(BSTR, BSTR) { return E_NOTIMPL; }
HRESULT DriverBag::SetBytes(BSTR, DWORD, BYTE*) { return E_NOTIMPL; }

HRESULT DriverBag::GetBytes(BSTR, DWORD* pcbValue, BYTE** ppValue) {
    if (pcbValue != nullptr) *pcbValue = 0;
    if (ppValue != nullptr) *ppValue = nullptr;
    return E_NOTIMPL;
}

HRESULT DriverBag::GetReadStream(BSTR, IStream** ppStream) {
    if (ppStream != nullptr) *ppStream = nullptr;
    return E_NOTIMPL;
}

HRESULT DriverBag::GetWriteStream(BSTR, IStream** ppStream) {
    if (ppStream != nullptr) *ppStream = nullptr;
    return E_NOTIMPL;
}

HRESULT DriverBag::GetTypeInfoCount(UINT* pCount) {
    if (pCount == nullptr) return E_POINTER;
    *pCount = 0;
    return S_OK;
}

HRESULT DriverBag::GetTypeInfo(UINT, LCID, ITypeInfo** ppInfo) {
    if (ppInfo != nullptr) *ppInfo = nullptr;
    return E_NOTIMPL;
}

HRESULT DriverBag::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) { return E_NOTIMPL; }

HRESULT DriverBag::Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) {
    return E_NOTIMPL;
}

}  // namespace devkit::pipeline
