#include <fstream>
#include <iterator>

#include "devkit/prntvpt/api/provider.h"
#include "platform/utf.h"

namespace devkit::prntvpt {
namespace {

constexpr const wchar_t* kEnvironmentVariable = L"PRNTVPT_CONFIGURATION";

[[nodiscard]] std::wstring ReadVariable(const wchar_t* name) {
    const DWORD size = GetEnvironmentVariableW(name, nullptr, 0);
    std::wstring value(size, L'\0');
    value.resize(size == 0 ? 0 : GetEnvironmentVariableW(name, value.data(), size));
    return value;
}

}  // namespace

HRESULT Provider::Configure(const char* pJson, std::string& error) noexcept {
    try {
        if (pJson == nullptr) throw ConfigurationError("there is no configuration");
        ConfigurationPtr configuration = ParseConfiguration(pJson);
        m_log.KeepCalls(configuration->recordCalls);
        {
            const std::lock_guard guard(m_lock);
            m_configuration = std::move(configuration);
            m_environmentRead = true;
        }
        Reset();
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception& problem) {
        error = problem.what();
        return E_INVALIDARG;
    }
}

HRESULT Provider::ExpectToken(HANDLE token) noexcept { return m_log.ExpectToken(token); }

ProviderReport Provider::Report() const {
    ProviderReport report;
    if (const ConfigurationPtr configuration = CurrentConfiguration()) {
        report.configuration = configuration->Describe();
        report.idleFaults = configuration->pFaults->Idle();
    }
    report.calls = m_log.Calls();
    report.counts = m_log.Counts();
    report.openHandles = m_handles.OpenHandles();
    report.breaches = m_handles.Breaches();
    report.notes = m_log.Notes();
    return report;
}

std::string Provider::DefaultTicket() const {
    const ConfigurationPtr configuration = CurrentConfiguration();
    return configuration ? DefaultTicketOf(*configuration) : std::string();
}

void Provider::Listen(std::function<void(const ProviderCall&)> listener) {
    m_log.Listen(std::move(listener));
}

void Provider::Reset() noexcept {
    m_log.Reset();
    m_handles.Reset();
    const std::lock_guard guard(m_lock);
    if (m_configuration) m_configuration->pFaults->Reset();
}

void Provider::Finish() noexcept {
    try {
        m_handles.Finish();
    } catch (...) {
        // Without memory for a breach there is none in the report.
    }
}

void Provider::ThreadEnded(DWORD thread) noexcept {
    try {
        m_handles.ThreadEnded(thread);
    } catch (...) {
        // As above.
    }
}

Provider::ConfigurationPtr Provider::CurrentConfiguration() const {
    const std::lock_guard guard(m_lock);
    if (m_environmentRead) return m_configuration;
    m_environmentRead = true;
    const std::wstring path = ReadVariable(kEnvironmentVariable);
    if (path.empty()) return m_configuration;
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    const std::string json{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    m_configuration = ParseConfiguration(json);
    m_log.KeepCalls(m_configuration->recordCalls);
    return m_configuration;
}

}  // namespace devkit::prntvpt
