#include <array>

#include "platform/prntvpt.h"

// The platform's print ticket provider as it would be if it cost nothing: the merged ticket is the base. What
// remains is the product's own share. Defined here, so that the linker does not look for the names in the
// import library.
extern "C" {

HRESULT WINAPI PTOpenProvider(PCWSTR, DWORD, HPTPROVIDER* pProvider) {
    *pProvider = reinterpret_cast<HPTPROVIDER>(static_cast<ULONG_PTR>(1));
    return S_OK;
}

HRESULT WINAPI PTCloseProvider(HPTPROVIDER) { return S_OK; }

HRESULT WINAPI PTMergeAndValidatePrintTicket(HPTPROVIDER, IStream* pBase, IStream*, EPrintTicketScope,
                                             IStream* pResult, BSTR*) {
    std::array<char, 4096> block;
    ULONG read = 0;
    while (SUCCEEDED(pBase->Read(block.data(), static_cast<ULONG>(block.size()), &read)) && read != 0) {
        const HRESULT hr = pResult->Write(block.data(), read, nullptr);
        if (FAILED(hr)) return hr;
    }
    return S_PT_NO_CONFLICT;
}

HRESULT WINAPI PTGetPrintCapabilities(HPTPROVIDER, IStream*, IStream*, BSTR*) { return E_NOTIMPL; }

}  // extern "C"
