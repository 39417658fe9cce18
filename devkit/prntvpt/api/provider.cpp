#include "devkit/prntvpt/api/provider.h"

#include "devkit/printschema/text.h"
#include "devkit/prntvpt/api/delay.h"

namespace devkit::prntvpt {
namespace {

constexpr DWORD SchemaVersion = 1;
constexpr HRESULT VersionNotSupported = static_cast<HRESULT>(0x80040001);
constexpr HRESULT NoSuchPrinter = HRESULT_FROM_WIN32(ERROR_INVALID_PRINTER_NAME);

[[nodiscard]] HRESULT OpenResult(const ActiveFaults& faults) {
    if (faults.Has(FaultMode::OpenDenied)) return E_ACCESSDENIED;
    if (faults.Has(FaultMode::OpenGone)) return NoSuchPrinter;
    if (faults.Has(FaultMode::OpenRpc)) return HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
    return S_OK;
}

[[nodiscard]] bool IsScope(EPrintTicketScope scope) {
    return scope == kPTPageScope || scope == kPTDocumentScope || scope == kPTJobScope;
}

}  // namespace

HRESULT Provider::QuerySchemaVersionSupport(PCWSTR printer, DWORD* pMaxVersion) noexcept {
    return Run("PTQuerySchemaVersionSupport", [&](LoggedCall&) {
        if (pMaxVersion == nullptr) return E_INVALIDARG;
        *pMaxVersion = 0;
        const HRESULT hr = FindPrinter(printer, CurrentConfiguration());
        if (SUCCEEDED(hr)) *pMaxVersion = SchemaVersion;
        return hr;
    });
}

HRESULT Provider::OpenProvider(PCWSTR printer, DWORD version, HPTPROVIDER* pProvider) noexcept {
    return Run("PTOpenProvider", [&](LoggedCall& call) {
        if (pProvider == nullptr) return E_INVALIDARG;
        *pProvider = nullptr;
        if (version == 0) return E_INVALIDARG;
        if (version > SchemaVersion) return VersionNotSupported;
        return Open(printer, pProvider, call);
    });
}

HRESULT Provider::OpenProviderEx(PCWSTR printer, DWORD maxVersion, DWORD, HPTPROVIDER* pProvider,
                                 DWORD* pUsedVersion) noexcept {
    return Run("PTOpenProviderEx", [&](LoggedCall& call) {
        if (pProvider != nullptr) *pProvider = nullptr;
        if (pUsedVersion != nullptr) *pUsedVersion = 0;
        if (pProvider == nullptr || pUsedVersion == nullptr || maxVersion == 0) return E_INVALIDARG;
        const HRESULT hr = Open(printer, pProvider, call);
        if (SUCCEEDED(hr)) *pUsedVersion = SchemaVersion;
        return hr;
    });
}

HRESULT Provider::CloseProvider(HPTPROVIDER provider) noexcept {
    return Run("PTCloseProvider", [&](LoggedCall& call) {
        call.handle = HandleNumber(provider);
        return m_handles.Close(provider) ? S_OK : E_HANDLE;
    });
}

HRESULT Provider::MergeAndValidatePrintTicket(HPTPROVIDER provider, IStream* pBase, IStream* pDelta,
                                              EPrintTicketScope scope, IStream* pResult,
                                              BSTR* pError) noexcept {
    constexpr const char* Function = "PTMergeAndValidatePrintTicket";
    if (pError != nullptr) *pError = nullptr;
    return Run(Function, [&](LoggedCall& call) {
        call.handle = HandleNumber(provider);
        if (IsScope(scope)) call.scope = scope;
        NoteToken(call);
        const ConfigurationPtr configuration = m_handles.Use(provider, Function);
        if (!configuration || pBase == nullptr || pResult == nullptr || !IsScope(scope)) return E_INVALIDARG;
        return Merge(*configuration, pBase, pDelta, scope, pResult, pError, call);
    });
}

HRESULT Provider::GetPrintCapabilities(HPTPROVIDER provider, IStream* pTicket, IStream* pCapabilities,
                                       BSTR* pError) noexcept {
    constexpr const char* Function = "PTGetPrintCapabilities";
    if (pError != nullptr) *pError = nullptr;
    return Run(Function, [&](LoggedCall& call) {
        call.handle = HandleNumber(provider);
        NoteToken(call);
        const ConfigurationPtr configuration = m_handles.Use(provider, Function);
        if (!configuration || pCapabilities == nullptr) return E_INVALIDARG;
        return WriteCapabilities(*configuration, pTicket, pCapabilities, pError, call);
    });
}

HRESULT Provider::ReleaseMemory(const void* pBuffer) noexcept {
    return Run("PTReleaseMemory", [&](LoggedCall&) { return pBuffer == nullptr ? S_OK : E_INVALIDARG; });
}

HRESULT Provider::NotImplemented(const char* function) noexcept {
    return Run(function, [](LoggedCall&) { return E_NOTIMPL; });
}

HRESULT Provider::Open(PCWSTR printer, HPTPROVIDER* pProvider, LoggedCall& call) {
    NoteToken(call);
    ConfigurationPtr configuration = CurrentConfiguration();
    const HRESULT found = FindPrinter(printer, configuration);
    if (FAILED(found)) return found;
    const ActiveFaults faults = configuration->pFaults->Strike(FaultTarget::Open);
    Delay(faults);
    const HRESULT hr = OpenResult(faults);
    if (FAILED(hr)) return hr;
    *pProvider = m_handles.Open(ToUtf8(printer), std::move(configuration));
    call.handle = HandleNumber(*pProvider);
    return S_OK;
}

HRESULT Provider::FindPrinter(PCWSTR printer, const ConfigurationPtr& configuration) const {
    if (printer == nullptr) return E_INVALIDARG;
    return configuration && configuration->HasPrinter(printer) ? S_OK : NoSuchPrinter;
}

void Provider::NoteToken(const LoggedCall& call) {
    if (call.expectedToken == false) m_log.Note(call.function + " was called without the expected token");
}

}  // namespace devkit::prntvpt
