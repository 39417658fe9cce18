#include "platform/windows.h"

#include <new>

#include "testfilter.h"

namespace {

using testfilter::StreamFilter;
using testfilter::TestFilter;

// A member of the module, whose own reference nobody gives up.
template <typename Filter>
class Factory final : public platform::ComIdentity<platform::ReferenceCount, IClassFactory> {
  public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) override try {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        if (pOuter != nullptr && !testfilter::ModeIs("aggregate")) return CLASS_E_NOAGGREGATION;
        return platform::MakeObject<Filter>()->QueryInterface(iid, ppObject);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** ppObject) try {
    static Factory<TestFilter> factory;
    static Factory<StreamFilter> streamFactory;
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    if (testfilter::ModeIs("pin-module")) {
        HMODULE self = nullptr;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           reinterpret_cast<const wchar_t*>(&DllGetClassObject), &self);
    }
    if (testfilter::ModeIs("any-class")) return factory.QueryInterface(iid, ppObject);
    if (IsEqualCLSID(classId, testfilter::kClassId)) return factory.QueryInterface(iid, ppObject);
    if (IsEqualCLSID(classId, testfilter::kStreamClassId)) return streamFactory.QueryInterface(iid, ppObject);
    if (IsEqualCLSID(classId, testfilter::kDirectClassId)) {
        return platform::MakeObject<TestFilter>()->QueryInterface(iid, ppObject);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}

STDAPI DllCanUnloadNow() {
    return testfilter::g_liveObjects == 0 || testfilter::ModeIs("unloadable-too-soon") ? S_OK : S_FALSE;
}
