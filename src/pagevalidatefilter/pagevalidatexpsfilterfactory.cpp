#include "pagevalidatefilter/pagevalidatexpsfilterfactory.h"

#include "base/logging/boundary.h"
#include "pagevalidatefilter/pagevalidatexpsfilter.h"
#include "platform/comptr.h"

namespace pagevalidatefilter {

HRESULT PageValidateXpsFilterFactory::QueryInterface(REFIID iid, void** ppObject) {
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    if (iid != __uuidof(IUnknown) && iid != __uuidof(IClassFactory)) return E_NOINTERFACE;
    *ppObject = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}

ULONG PageValidateXpsFilterFactory::AddRef() { return ++m_references; }

ULONG PageValidateXpsFilterFactory::Release() {
    const ULONG references = --m_references;
    if (references == 0) delete this;
    return references;
}

HRESULT PageValidateXpsFilterFactory::CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) {
    if (ppObject != nullptr) *ppObject = nullptr;
    if (pOuter != nullptr) return CLASS_E_NOAGGREGATION;
    if (ppObject == nullptr) return E_POINTER;
    return base::logging::Guarded([&] {
        const auto filter = platform::ComPtr<PageValidateXpsFilter>::Adopt(new PageValidateXpsFilter());
        return filter->QueryInterface(iid, ppObject);
    });
}

HRESULT PageValidateXpsFilterFactory::LockServer(BOOL lock) {
    if (lock) {
        if (m_serverLocks++ == 0) LockModule();
        return S_OK;
    }
    ULONG locks = m_serverLocks;
    while (locks != 0 && !m_serverLocks.compare_exchange_weak(locks, locks - 1)) {
    }
    if (locks == 1) UnlockModule();
    return S_OK;
}

}  // namespace pagevalidatefilter
