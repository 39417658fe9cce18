#include "devkit/msxml/com/domregistration.h"

#include <system_error>

#include "devkit/msxml/com/conformance.h"
#include "devkit/msxml/com/dispatchobject.h"
#include "devkit/msxml/com/domdocument.h"
#include "platform/msxml6.h"

namespace devkit::msxml {

namespace {

// Any thread may use it.
class ClassObject final : public LiveObject<IClassFactory> {
  public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        return pOuter != nullptr ? CLASS_E_NOAGGREGATION : CreateDomDocument(iid, ppObject);
    }
    // The library is part of the program and always there.
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

// The system's class object, from its server itself: COM's class table may already name another. Null when
// there is none.
platform::ComPtr<IClassFactory> SystemClassObject(REFCLSID clsid) noexcept {
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    // The module stays loaded, as it does once COM has used it.
    const HMODULE module = LoadLibraryExW(L"msxml6.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module == nullptr) return nullptr;
    const FARPROC entry = GetProcAddress(module, "DllGetClassObject");
    if (entry == nullptr) return nullptr;
    const auto getClassObject = reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(entry));
    platform::ComPtr<IClassFactory> pFactory;
    const HRESULT result = getClassObject(clsid, __uuidof(IClassFactory), pFactory.PutVoid());
    return SUCCEEDED(result) ? pFactory : nullptr;
}

}  // namespace

bool SystemDomConforms() noexcept {
    const platform::ComPtr<IClassFactory> pFactory = SystemClassObject(platform::CLSID_DomDocument60);
    return pFactory && DomConforms(*pFactory.Get());
}

platform::ComPtr<IClassFactory> MakeDomClassObject() {
    return platform::ComPtr<IClassFactory>::Adopt(platform::MakeObject<ClassObject>().Detach());
}

ClassRegistration::ClassRegistration(REFCLSID clsid, IClassFactory& factory) {
    const HRESULT result =
        CoRegisterClassObject(clsid, &factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &m_cookie);
    if (FAILED(result))
        throw std::system_error(result, std::system_category(), "COM refused the class object");
}

ClassRegistration::~ClassRegistration() { CoRevokeClassObject(m_cookie); }

DomRegistration::DomRegistration()
    : m_registration(platform::CLSID_DomDocument60, *MakeDomClassObject().Get()) {}

SaxRegistration::SaxRegistration() {
    if (const platform::ComPtr<IClassFactory> pFactory = SystemClassObject(platform::CLSID_SaxXmlReader60))
        m_registration.emplace(platform::CLSID_SaxXmlReader60, *pFactory.Get());
}

}  // namespace devkit::msxml
