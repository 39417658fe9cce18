#include "platform/prntvpt.h"

// A DLL that imports from prntvpt.dll by name, as a filter does.

extern "C" __declspec(dllexport) HRESULT WINAPI OpenAndClose(PCWSTR printer) {
    HPTPROVIDER provider = nullptr;
    const HRESULT hr = PTOpenProvider(printer, 1, &provider);
    return FAILED(hr) ? hr : PTCloseProvider(provider);
}
