#include "devkit/prntvpt/dll/instance.h"
#include "platform/prntvpt.h"

using devkit::prntvpt::Instance;

// The functions of the platform that the simulation does.

extern "C" {

HRESULT WINAPI PTQuerySchemaVersionSupport(PCWSTR printer, DWORD* pMaxVersion) {
    return Instance().QuerySchemaVersionSupport(printer, pMaxVersion);
}

HRESULT WINAPI PTOpenProvider(PCWSTR printer, DWORD version, HPTPROVIDER* pProvider) {
    return Instance().OpenProvider(printer, version, pProvider);
}

HRESULT WINAPI PTOpenProviderEx(PCWSTR printer, DWORD maxVersion, DWORD preferredVersion,
                                HPTPROVIDER* pProvider, DWORD* pUsedVersion) {
    return Instance().OpenProviderEx(printer, maxVersion, preferredVersion, pProvider, pUsedVersion);
}

HRESULT WINAPI PTCloseProvider(HPTPROVIDER provider) { return Instance().CloseProvider(provider); }

HRESULT WINAPI PTReleaseMemory(PVOID pBuffer) { return Instance().ReleaseMemory(pBuffer); }

HRESULT WINAPI PTGetPrintCapabilities(HPTPROVIDER provider, IStream* pTicket, IStream* pCapabilities,
                                      BSTR* pError) {
    return Instance().GetPrintCapabilities(provider, pTicket, pCapabilities, pError);
}

HRESULT WINAPI PTMergeAndValidatePrintTicket(HPTPROVIDER provider, IStream* pBase, IStream* pDelta,
                                             EPrintTicketScope scope, IStream* pResult, BSTR* pError) {
    return Instance().MergeAndValidatePrintTicket(provider, pBase, pDelta, scope, pResult, pError);
}
}
