#include "platform/windows.h"

#include "testfilter.h"

namespace {

using testfilter::TestFilter;

class Factory final : public IClassFactory {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory);
        *ppObject = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    // The one factory lives as long as the module.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        if (pOuter != nullptr) return CLASS_E_NOAGGREGATION;
        return platform::ComPtr<IPrintPipelineFilter>::Adopt(new TestFilter)->QueryInterface(iid, ppObject);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** ppObject) {
    static Factory factory;
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    if (IsEqualCLSID(classId, testfilter::kClassId)) return factory.QueryInterface(iid, ppObject);
    if (IsEqualCLSID(classId, testfilter::kDirectClassId)) {
        return platform::ComPtr<IPrintPipelineFilter>::Adopt(new TestFilter)->QueryInterface(iid, ppObject);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() { return testfilter::liveObjects == 0 ? S_OK : S_FALSE; }
