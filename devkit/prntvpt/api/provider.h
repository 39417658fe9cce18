#pragma once

#include "platform/windows.h"

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "devkit/prntvpt/api/calltime.h"
#include "devkit/prntvpt/api/configuration.h"
#include "devkit/prntvpt/api/fault.h"
#include "devkit/prntvpt/api/handleregistry.h"
#include "devkit/prntvpt/api/providerlog.h"
#include "platform/prntvpt.h"

namespace devkit::prntvpt {

// A simulation of prntvpt: the functions of the platform with their arguments and results, and the control
// over them that control.h describes. Any thread may use it.
class Provider {
  public:
    // E_INVALIDARG with one line in `error`; what was in force stays.
    [[nodiscard]] HRESULT Configure(const char* pJson, std::string& error) noexcept;
    [[nodiscard]] HRESULT ExpectToken(HANDLE token) noexcept;
    [[nodiscard]] ProviderReport Report() const;
    // Empty before Configure.
    [[nodiscard]] std::string DefaultTicket() const;
    void Listen(std::function<void(const ProviderCall&)> listener);
    void Reset() noexcept;
    void Finish() noexcept;
    void ThreadEnded(DWORD thread) noexcept;

    [[nodiscard]] HRESULT QuerySchemaVersionSupport(PCWSTR printer, DWORD* pMaxVersion) noexcept;
    [[nodiscard]] HRESULT OpenProvider(PCWSTR printer, DWORD version, HPTPROVIDER* pProvider) noexcept;
    [[nodiscard]] HRESULT OpenProviderEx(PCWSTR printer, DWORD maxVersion, DWORD preferredVersion,
                                         HPTPROVIDER* pProvider, DWORD* pUsedVersion) noexcept;
    [[nodiscard]] HRESULT CloseProvider(HPTPROVIDER provider) noexcept;
    [[nodiscard]] HRESULT MergeAndValidatePrintTicket(HPTPROVIDER provider, IStream* pBase, IStream* pDelta,
                                                      EPrintTicketScope scope, IStream* pResult,
                                                      BSTR* pError) noexcept;
    [[nodiscard]] HRESULT GetPrintCapabilities(HPTPROVIDER provider, IStream* pTicket, IStream* pCapabilities,
                                               BSTR* pError) noexcept;
    // Nothing gives out memory of its own, so there is nothing but null to release.
    [[nodiscard]] HRESULT ReleaseMemory(const void* pBuffer) noexcept;
    // What the simulation does not do.
    [[nodiscard]] HRESULT NotImplemented(const char* function) noexcept;

  private:
    using ConfigurationPtr = std::shared_ptr<const Configuration>;

    // Runs the body of a function, a call of ProviderCall& that returns HRESULT: logs it, and turns what it
    // throws into a result.
    template <typename Body>
    HRESULT Run(const char* function, const Body& body) noexcept {
        try {
            const std::chrono::nanoseconds start = Now();
            ProviderCall call = m_log.Begin(function);
            call.start = start;
            try {
                call.result = body(call);
            } catch (const std::bad_alloc&) {
                call.result = E_OUTOFMEMORY;
            } catch (const std::exception& error) {
                m_log.Note(std::string(function) + ": " + error.what());
                call.result = E_UNEXPECTED;
            }
            const HRESULT result = call.result;
            call.own = Now() - start - call.inStreams;
            m_log.Add(std::move(call));
            return result;
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }

    // Reads PRNTVPT_CONFIGURATION when nothing else has configured the provider.
    [[nodiscard]] ConfigurationPtr CurrentConfiguration() const;
    [[nodiscard]] HRESULT Open(PCWSTR printer, HPTPROVIDER* pProvider, ProviderCall& call);
    [[nodiscard]] HRESULT FindPrinter(PCWSTR printer, const ConfigurationPtr& configuration) const;
    [[nodiscard]] HRESULT Merge(const Configuration& configuration, IStream* pBase, IStream* pDelta,
                                EPrintTicketScope scope, IStream* pResult, BSTR* pError, ProviderCall& call);
    [[nodiscard]] HRESULT WriteCapabilities(const Configuration& configuration, IStream* pTicket,
                                            IStream* pCapabilities, BSTR* pError, ProviderCall& call);
    void NoteToken(const ProviderCall& call);

    mutable std::mutex m_lock;
    mutable ConfigurationPtr m_configuration;
    mutable bool m_environmentRead = false;
    mutable ProviderLog m_log;
    HandleRegistry m_handles;
};

}  // namespace devkit::prntvpt
