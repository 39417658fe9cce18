#include "platform/windows.h"

#include "devkit/prntvpt/dll/instance.h"
#include "platform/prntvpt.h"

// The functions that the simulation does not do. They are there so that whatever links with prntvpt's import
// library can be loaded; each takes as many arguments off the stack as on Windows.

namespace {

[[nodiscard]] HRESULT NotImplemented(const char* function) {
    return devkit::prntvpt::Instance().NotImplemented(function);
}

}  // namespace

extern "C" {

HRESULT WINAPI PTGetPrintDeviceCapabilities(HPTPROVIDER, IStream*, IStream*, BSTR*) {
    return NotImplemented("PTGetPrintDeviceCapabilities");
}

HRESULT WINAPI PTGetPrintDeviceResources(HPTPROVIDER, LPCWSTR, IStream*, IStream*, BSTR*) {
    return NotImplemented("PTGetPrintDeviceResources");
}

HRESULT WINAPI PTConvertPrintTicketToDevMode(HPTPROVIDER, IStream*, EDefaultDevmodeType, EPrintTicketScope,
                                             ULONG* pcbDevmode, PDEVMODE* ppDevmode, BSTR*) {
    if (pcbDevmode != nullptr) *pcbDevmode = 0;
    if (ppDevmode != nullptr) *ppDevmode = nullptr;
    return NotImplemented("PTConvertPrintTicketToDevMode");
}

HRESULT WINAPI PTConvertDevModeToPrintTicket(HPTPROVIDER, ULONG, PDEVMODE, EPrintTicketScope, IStream*) {
    return NotImplemented("PTConvertDevModeToPrintTicket");
}

HRESULT WINAPI BindPTProviderThunk(void*, void*, void*, void*, void*) {
    return NotImplemented("BindPTProviderThunk");
}

HRESULT WINAPI ConvertDevModeToPrintTicketThunk(void*, void*, void*, void*, void*) {
    return NotImplemented("ConvertDevModeToPrintTicketThunk");
}

HRESULT WINAPI ConvertDevModeToPrintTicketThunk2(void*, void*, void*, void*, void*, void*) {
    return NotImplemented("ConvertDevModeToPrintTicketThunk2");
}

HRESULT WINAPI ConvertPrintTicketToDevModeThunk(void*, void*, void*, void*, void*, void*, void*) {
    return NotImplemented("ConvertPrintTicketToDevModeThunk");
}

HRESULT WINAPI ConvertPrintTicketToDevModeThunk2(void*, void*, void*, void*, void*, void*, void*, void*) {
    return NotImplemented("ConvertPrintTicketToDevModeThunk2");
}

HRESULT WINAPI GetDeviceDefaultPrintTicketThunk(void*, void*, void*) {
    return NotImplemented("GetDeviceDefaultPrintTicketThunk");
}

HRESULT WINAPI GetDeviceNamespacesThunk(void*, void*, void*) {
    return NotImplemented("GetDeviceNamespacesThunk");
}

HRESULT WINAPI GetPrintCapabilitiesThunk(void*, void*, void*, void*, void*) {
    return NotImplemented("GetPrintCapabilitiesThunk");
}

HRESULT WINAPI GetPrintCapabilitiesThunk2(void*, void*, void*, void*, void*, void*) {
    return NotImplemented("GetPrintCapabilitiesThunk2");
}

HRESULT WINAPI GetPrintDeviceCapabilitiesThunk(void*, void*, void*, void*, void*) {
    return NotImplemented("GetPrintDeviceCapabilitiesThunk");
}

HRESULT WINAPI GetPrintDeviceCapabilitiesThunk2(void*, void*, void*, void*, void*, void*) {
    return NotImplemented("GetPrintDeviceCapabilitiesThunk2");
}

HRESULT WINAPI GetPrintDeviceResourcesThunk(void*, void*, void*, void*, void*, void*) {
    return NotImplemented("GetPrintDeviceResourcesThunk");
}

HRESULT WINAPI GetPrintDeviceResourcesThunk2(void*, void*, void*, void*, void*, void*, void*) {
    return NotImplemented("GetPrintDeviceResourcesThunk2");
}

HRESULT WINAPI GetSchemaVersionThunk(void*) { return NotImplemented("GetSchemaVersionThunk"); }

HRESULT WINAPI MergeAndValidatePrintTicketThunk(void*, void*, void*, void*, void*, void*, void*) {
    return NotImplemented("MergeAndValidatePrintTicketThunk");
}

HRESULT WINAPI MergeAndValidatePrintTicketThunk2(void*, void*, void*, void*, void*, void*, void*, void*,
                                                 void*) {
    return NotImplemented("MergeAndValidatePrintTicketThunk2");
}

HRESULT WINAPI UnbindPTProviderThunk(void*) { return NotImplemented("UnbindPTProviderThunk"); }

STDAPI DllGetClassObject(REFCLSID, REFIID, LPVOID* ppObject) {
    if (ppObject != nullptr) *ppObject = nullptr;
    return NotImplemented("DllGetClassObject");
}

// Handles of the DLL may be open anywhere.
STDAPI DllCanUnloadNow() { return S_FALSE; }

STDAPI DllRegisterServer() { return NotImplemented("DllRegisterServer"); }

STDAPI DllUnregisterServer() { return NotImplemented("DllUnregisterServer"); }
}
