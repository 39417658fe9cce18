#pragma once

#include "platform/windows.h"

#include <atomic>

#include "platform/comobject.h"
#include "platform/msxml6.h"

PLATFORM_INTERFACE_EXTENDS(IXMLDOMNodeList, IDispatch)
PLATFORM_INTERFACE_EXTENDS(IXMLDOMNamedNodeMap, IDispatch)
PLATFORM_INTERFACE_EXTENDS(IXMLDOMParseError, IDispatch)
PLATFORM_INTERFACE_EXTENDS(IXMLDOMImplementation, IDispatch)

namespace devkit::msxml {

// The reference count of an object that LiveObjectCount counts.
class LiveCount : public platform::ReferenceCount {
  public:
    [[nodiscard]] static long Living() noexcept { return s_living; }

  protected:
    LiveCount() noexcept { ++s_living; }
    ~LiveCount() { --s_living; }

  private:
    inline static std::atomic<long> s_living = 0;
};

template <typename Interface>
using LiveObject = platform::ComIdentity<LiveCount, Interface>;

// The IDispatch part of the DOM interfaces. Late binding is not offered: scripts are not who this library
// serves.
template <typename Base>
class WithoutLateBinding : public Base {
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

// An object with one of the DOM's interfaces, destroyed at its last Release.
template <typename Interface>
using DomObject = WithoutLateBinding<LiveObject<Interface>>;

// Whether iid names one of the interfaces.
template <typename... Interfaces>
[[nodiscard]] bool IsOneOf(REFIID iid) noexcept {
    return ((iid == __uuidof(Interfaces)) || ...);
}

// Gives a new object to the caller of a COM method.
template <typename Object, typename Interface, typename... Arguments>
[[nodiscard]] HRESULT ReturnNew(Interface** ppOut, Arguments&&... arguments) {
    *ppOut = platform::MakeObject<Object>(std::forward<Arguments>(arguments)...).Detach();
    return S_OK;
}

}  // namespace devkit::msxml
