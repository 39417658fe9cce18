#include "platform/windows.h"

#include <new>

#include "pagevalidatefilter/module.h"
#include "pagevalidatefilter/pagevalidatexpsfilter.h"
#include "pagevalidatefilter/pagevalidatexpsfilterfactory.h"
#include "platform/comptr.h"

using pagevalidatefilter::PageValidateXpsFilterFactory;

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** ppObject) {
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    if (clsid != pagevalidatefilter::CLSID_PageValidateXpsFilter) return CLASS_E_CLASSNOTAVAILABLE;
    const auto factory = platform::ComPtr<PageValidateXpsFilterFactory>::Adopt(
        new (std::nothrow) PageValidateXpsFilterFactory());
    return factory ? factory->QueryInterface(iid, ppObject) : E_OUTOFMEMORY;
}

STDAPI DllCanUnloadNow() { return pagevalidatefilter::ModuleCount() == 0 ? S_OK : S_FALSE; }
