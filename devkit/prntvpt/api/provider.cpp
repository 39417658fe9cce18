#include "devkit/prntvpt/api/provider.h"

#include "platform/utf.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

constexpr DWORD kSchemaVersion = 1;
constexpr HRESULT kVersionNotSupported = static_cast<HRESULT>(0x80040001);
constexpr HRESULT kNoSuchPrinter = HRESULT_FROM_WIN32(ERROR_INVALID_PRINTER_NAME);

[[nodiscard]] HRESULT OpenResult(const ActiveFaults& faults) {
    if (faults.Has(FaultMode::OpenDenied)) return E_ACCESSDENIED;
    if (faults.Has(FaultMode::OpenGone)) return kNoSuchPrinter;
    if (faults.Has(FaultMode::OpenRpc)) return HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
    return S_OK;
}

[[nodiscard]] bool IsScope(EPrintTicketScope scope) {
    return scope == kPTPageScope || scope == kPTDocumentScope || scope == kPTJobScope;
}

}  // namespace

HRESULT Provider::QuerySchemaVersionSupport(PCWSTR printer, DWORD* pMaxVersion) noexcept {
    return Run("PTQuerySchemaVersionSupport", [&](ProviderCall&) {
        if (pMaxVersion == nullptr) return E_INVALIDARG;
        *pMaxVersion = 0;
        const HRESULT hr = FindPrinter(printer, CurrentConfiguration());
        if (SUCCEEDED(hr)) *pMaxVersion = kSchemaVersion;
        return hr;
    });
}

HRESULT Provider::OpenProvider(PCWSTR printer, DWORD version, HPTPROVIDER* pProvider) noexcept {
    return Run("PTOpenProvider", [&](ProviderCall& call) {
        if (pProvider == nullptr) return E_INVALIDARG;
        *pProvider = nullptr;
        if (version == 0) return E_INVALIDARG;
        if (version > kSchemaVersion) return kVersionNotSupported;
        return Open(printer, pProvider, call);
    });
}

HRESULT Provider::OpenProviderEx(PCWSTR printer, DWORD maxVersion, DWORD, HPTPROVIDER* pProvider,
                                 DWORD* pUsedVersion) noexcept {
    return Run("PTOpenProviderEx", [&](ProviderCall& call) {
        if (pProvider != nullptr) *pProvider = nullptr;
        if (pUsedVersion != nullptr) *pUsedVersion = 0;
        if (pProvider == nullptr || pUsedVersion == nullptr || maxVersion == 0) return E_INVALIDARG;
        const HRESULT hr = Open(printer, pProvider, call);
        if (SUCCEEDED(hr)) *pUsedVersion = kSchemaVersion;
        return hr;
    });
}

HRESULT Provider::CloseProvider(HPTPROVIDER provider) noexcept {
    return Run("PTCloseProvider", [&](ProviderCall& call) {
        call.handle = HandleNumber(provider);
        return m_handles.Close(provider) ? S_OK : E_HANDLE;
    });
}

HRESULT Provider::MergeAndValidatePrintTicket(HPTPROVIDER provider, IStream* pBase, IStream* pDelta,
                                              EPrintTicketScope scope, IStream* pResult,
                                              BSTR* pError) noexcept {
    constexpr const char* kFunction = "PTMergeAndValidatePrintTicket";
    if (pError != nullptr) *pError = nullptr;
    return Run(kFunction, [&](ProviderCall& call) {
        call.handle = HandleNumber(provider);
        if (IsScope(scope)) call.scope = ScopeName(scope);
        NoteToken(call);
        const ConfigurationPtr configuration = m_handles.Use(provider, kFunction);
        if (!configuration || pBase == nullptr || pResult == nullptr || !IsScope(scope)) return E_INVALIDARG;
        return Merge(*configuration, pBase, pDelta, scope, pResult, pError, call);
    });
}

HRESULT Provider::GetPrintCapabilities(HPTPROVIDER provider, IStream* pTicket, IStream* pCapabilities,
                                       BSTR* pError) noexcept {
    constexpr const char* kFunction = "PTGetPrintCapabilities";
    if (pError != nullptr) *pError = nullptr;
    return Run(kFunction, [&](ProviderCall& call) {
        call.handle = HandleNumber(provider);
        NoteToken(call);
        const ConfigurationPtr configuration = m_handles.Use(provider, kFunction);
        if (!configuration || pCapabilities == nullptr) return E_INVALIDARG;
        return WriteCapabilities(*configuration, pTicket, pCapabilities, pError, call);
    });
}

HRESULT Provider::ReleaseMemory(const void* pBuffer) noexcept {
    return Run("PTReleaseMemory", [&](ProviderCall&) { return pBuffer == nullptr ? S_OK : E_INVALIDARG; });
}

HRESULT Provider::NotImplemented(const char* function) noexcept {
    return Run(function, [](ProviderCall&) { return E_NOTIMPL; });
}

HRESULT Provider::Open(PCWSTR printer, HPTPROVIDER* pProvider, ProviderCall& call) {
    NoteToken(call);
    ConfigurationPtr configuration = CurrentConfiguration();
    const HRESULT found = FindPrinter(printer, configuration);
    if (FAILED(found)) return found;
    const ActiveFaults faults = configuration->pFaults->Strike(FaultTarget::Open);
    faults.Delay();
    const HRESULT hr = OpenResult(faults);
    if (FAILED(hr)) return hr;
    *pProvider = m_handles.Open(platform::ToUtf8(printer), std::move(configuration));
    call.handle = HandleNumber(*pProvider);
    return S_OK;
}

HRESULT Provider::FindPrinter(PCWSTR printer, const ConfigurationPtr& configuration) const {
    if (printer == nullptr) return E_INVALIDARG;
    return configuration && configuration->HasPrinter(printer) ? S_OK : kNoSuchPrinter;
}

void Provider::NoteToken(const ProviderCall& call) {
    if (call.expectedToken == false) m_log.Note(call.function + " was called without the expected token");
}

}  // namespace devkit::prntvpt
