#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "devkit/prntvpt/control/control.h"

namespace devkit::prntvpt {

// What the simulated provider is to do; control.h says what the values mean.
struct ProviderSettings {
    std::filesystem::path device;
    std::vector<std::string> printers;  // empty: those of the device model
    std::vector<std::string> switches;  // "KEY=VALUE"
    bool recordTickets = true;
};

// A configuration that the provider refuses; one line of text.
class ProviderConfigurationError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct ProviderCall {
    std::string function;
    std::optional<std::uint64_t> handle;
    std::optional<std::string> scope;
    std::uint32_t thread = 0;
    bool impersonating = false;
    std::optional<bool> expectedToken;
    HRESULT result = S_OK;
    std::optional<std::string> base;
    std::optional<std::string> delta;
    std::optional<std::string> output;
    std::optional<std::string> error;
};

struct ProviderBreach {
    std::string stop;
    std::string text;
};

struct OpenHandle {
    std::uint64_t handle = 0;
    std::string printer;
    std::uint32_t thread = 0;
};

struct ProviderReport {
    std::vector<ProviderCall> calls;
    std::map<std::string, std::uint64_t> counts;
    std::vector<OpenHandle> openHandles;
    std::vector<ProviderBreach> breaches;
    std::vector<std::string> notes;
    std::string json;  // the report as the provider gave it
};

// Reads the JSON of a report. std::runtime_error when it is none.
[[nodiscard]] ProviderReport ParseProviderReport(std::string json);

// A loaded prntvpt.dll of the kit. Load it by its full path before the filter: a filter that imports from
// prntvpt.dll by name is then bound to it. It is never unloaded, as the filter may be bound to it for the
// rest of the process. Any thread may use it.
class SimulatedProvider {
  public:
    // std::runtime_error, one line, when the file cannot be loaded or is not the kit's.
    explicit SimulatedProvider(const std::filesystem::path& dll);

    // ProviderConfigurationError.
    void Configure(const ProviderSettings& settings);
    // std::system_error when the token cannot be queried.
    void ExpectToken(HANDLE token);
    // The bytes of the device's default ticket with the variants of the configuration; empty before
    // Configure.
    [[nodiscard]] std::string DefaultTicket() const;
    [[nodiscard]] ProviderReport Report() const;
    void Reset();
    void Finish();

    [[nodiscard]] HMODULE Module() const noexcept { return m_module; }

  private:
    HMODULE m_module = nullptr;
    SimConfigureFunction* m_pConfigure = nullptr;
    SimExpectTokenFunction* m_pExpectToken = nullptr;
    SimReportFunction* m_pReport = nullptr;
    SimDefaultTicketFunction* m_pDefaultTicket = nullptr;
    SimResetFunction* m_pReset = nullptr;
    SimFinishFunction* m_pFinish = nullptr;
};

}  // namespace devkit::prntvpt
