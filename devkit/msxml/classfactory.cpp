#include "devkit/msxml/classfactory.h"

#include "devkit/msxml/dispatch.h"
#include "devkit/msxml/domdocument.h"

namespace devkit::msxml {

HRESULT ClassFactory::QueryInterface(REFIID iid, void** ppObject) {
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    if (!IsOneOf<IUnknown, IClassFactory>(iid)) return E_NOINTERFACE;
    *ppObject = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}

ULONG ClassFactory::AddRef() { return ++m_references; }

ULONG ClassFactory::Release() {
    const ULONG left = --m_references;
    if (left == 0) delete this;
    return left;
}

HRESULT ClassFactory::CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) {
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    return pOuter != nullptr ? CLASS_E_NOAGGREGATION : CreateDomDocument(iid, ppObject);
}

HRESULT ClassFactory::LockServer(BOOL) { return S_OK; }

}  // namespace devkit::msxml
