#pragma once

#include "platform/windows.h"

namespace devkit::msxml {

// The IDispatch part of the DOM interfaces. Late binding is not offered: scripts are not who this library
// serves.
template <typename Interface>
class Dispatch : public Interface {
  public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pCount) override {
        if (pCount == nullptr) return E_INVALIDARG;
        *pCount = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** ppInfo) override {
        if (ppInfo != nullptr) *ppInfo = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
};

// Whether iid names one of the interfaces.
template <typename... Interfaces>
[[nodiscard]] bool IsOneOf(REFIID iid) noexcept {
    return ((iid == __uuidof(Interfaces)) || ...);
}

}  // namespace devkit::msxml
