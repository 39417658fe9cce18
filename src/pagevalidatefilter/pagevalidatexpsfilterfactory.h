#pragma once

#include "platform/windows.h"

#include <atomic>

#include "pagevalidatefilter/module.h"
#include "platform/comobject.h"

namespace pagevalidatefilter {

// The class factory of PageValidateXpsFilter. Made with one reference, destroyed by the last Release; it
// counts as one live object of the module, and as a second one while it is locked. Any thread may use it.
class PageValidateXpsFilterFactory final
    : public platform::ComIdentity<platform::ReferenceCount, IClassFactory> {
  public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) override;

    // The module counts a factory's first lock and its last unlock; an unlock without a lock changes nothing.
    // Always S_OK.
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

  private:
    ~PageValidateXpsFilterFactory() override = default;

    ModuleReference m_moduleReference;
    std::atomic<ULONG> m_serverLocks = 0;
};

}  // namespace pagevalidatefilter
