#include "pagevalidatefilter/pagevalidatexpsfilterfactory.h"

#include "base/logging/boundary.h"
#include "pagevalidatefilter/pagevalidatexpsfilter.h"

namespace pagevalidatefilter {

HRESULT PageValidateXpsFilterFactory::CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) {
    if (ppObject != nullptr) *ppObject = nullptr;
    if (pOuter != nullptr) return CLASS_E_NOAGGREGATION;
    if (ppObject == nullptr) return E_POINTER;
    return base::logging::Guarded(
        [&] { return platform::MakeObject<PageValidateXpsFilter>()->QueryInterface(iid, ppObject); });
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
