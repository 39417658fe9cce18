#pragma once

#include "platform/windows.h"

#include <atomic>

#include "devkit/msxml/liveobject.h"

namespace devkit::msxml {

// The class object of the DOM document. Any thread may use it.
class ClassFactory final : public IClassFactory, private LiveObject {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // The document cannot be aggregated: CLASS_E_NOAGGREGATION.
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) override;
    // The library is part of the program and always there: S_OK and no effect.
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

  private:
    ~ClassFactory() = default;

    std::atomic<ULONG> m_references = 0;
};

}  // namespace devkit::msxml
