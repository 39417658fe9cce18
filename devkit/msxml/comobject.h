#pragma once

#include <atomic>

#include "devkit/msxml/dispatch.h"
#include "devkit/msxml/liveobject.h"
#include "platform/comptr.h"

namespace devkit::msxml {

// A COM object with one interface on top of IDispatch, deleted at its last Release.
template <typename Interface>
class ComObject : public Dispatch<Interface>, private LiveObject {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        if (!IsOneOf<IUnknown, IDispatch, Interface>(iid)) return E_NOINTERFACE;
        *ppObject = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) delete this;
        return left;
    }

  protected:
    virtual ~ComObject() = default;

  private:
    std::atomic<ULONG> m_references = 0;
};

// Gives a new object to the caller of a COM method. E_INVALIDARG for a null out-parameter.
template <typename Interface>
[[nodiscard]] HRESULT ReturnNew(ComObject<Interface>* pObject, Interface** ppOut) noexcept {
    platform::ComPtr<Interface> owner(pObject);
    if (ppOut == nullptr) return E_INVALIDARG;
    *ppOut = owner.Detach();
    return S_OK;
}

}  // namespace devkit::msxml
