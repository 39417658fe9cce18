#include "devkit/pipeline/propertybag.h"

#include <system_error>

#include "devkit/pipeline/boundary.h"
#include "devkit/pipeline/text.h"

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
    const HRESULT hr = Store(name, value);
    if (FAILED(hr)) throw std::system_error(hr, std::system_category(), "property " + Narrow(name));
}

void PropertyBag::PutHandle(std::wstring_view name, HANDLE handle) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BYREF;
    value.byref = handle;
    Put(name, value);
}

HRESULT PropertyBag::AddProperty(const wchar_t* name, const VARIANT* value) {
    return Guarded([&]() -> HRESULT {
        if (const HRESULT hr =
                Context().Calls().Enter("IPrintPipelinePropertyBag::AddProperty", NarrowOrNull(name));
            FAILED(hr)) {
            return hr;
        }
        if (name == nullptr || value == nullptr) return E_INVALIDARG;
        return Store(name, *value);
    });
}

HRESULT PropertyBag::Store(std::wstring_view name, const VARIANT& value) {
    VARIANT copy;
    const HRESULT hr = CopyValue(value, copy);
    if (FAILED(hr)) return hr;
    const std::lock_guard guard(m_lock);
    *m_values[std::wstring(name)].Put() = copy;
    return S_OK;
}

HRESULT PropertyBag::GetProperty(const wchar_t* name, VARIANT* value) {
    if (value != nullptr) VariantInit(value);
    return Guarded([&]() -> HRESULT {
        if (const HRESULT hr =
                Context().Calls().Enter("IPrintPipelinePropertyBag::GetProperty", NarrowOrNull(name));
            FAILED(hr)) {
            return hr;
        }
        if (name == nullptr || value == nullptr) return E_INVALIDARG;
        const std::lock_guard guard(m_lock);
        const auto found = m_values.find(std::wstring_view(name));
        return found == m_values.end() ? PropertyMissing : CopyValue(found->second.Get(), *value);
    });
}

BOOL PropertyBag::DeleteProperty(const wchar_t* name) {
    Context().Calls().Note("IPrintPipelinePropertyBag::DeleteProperty", NarrowOrNull(name));
    if (name == nullptr) return FALSE;
    const std::lock_guard guard(m_lock);
    const auto found = m_values.find(std::wstring_view(name));
    if (found == m_values.end()) return FALSE;
    m_values.erase(found);
    return TRUE;
}

}  // namespace devkit::pipeline
