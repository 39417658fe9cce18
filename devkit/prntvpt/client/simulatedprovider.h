#pragma once

#include "platform/windows.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

#include "devkit/prntvpt/control/control.h"
#include "devkit/prntvpt/control/messages.h"

namespace devkit::prntvpt {

// A configuration that the provider refuses; one line of text.
class ProviderConfigurationError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A loaded prntvpt.dll of the kit. Load it by its full path before the filter: a filter that imports from
// prntvpt.dll by name is then bound to it. It is never unloaded, as the filter may be bound to it for the
// rest of the process. Any thread may use it.
class SimulatedProvider {
  public:
    // std::runtime_error, one line, when the file cannot be loaded or is not the kit's.
    explicit SimulatedProvider(const std::filesystem::path& dll);
    SimulatedProvider(const SimulatedProvider&) = delete;
    SimulatedProvider& operator=(const SimulatedProvider&) = delete;
    ~SimulatedProvider();

    // ProviderConfigurationError.
    void Configure(const ProviderSettings& settings);
    // std::system_error when the token cannot be queried.
    void ExpectToken(HANDLE token);
    // The bytes of the device's default ticket with the variants of the configuration; empty before
    // Configure.
    [[nodiscard]] std::string DefaultTicket() const;
    [[nodiscard]] ProviderReport Report() const;
    // `listener` is given each call when it ends, on the thread of the call; what it throws is lost. Empty:
    // nobody listens any longer, but for calls that are under way.
    using Listener = std::function<void(const ProviderCall&)>;
    void Listen(Listener listener);
    void Reset();
    void Finish();

    [[nodiscard]] HMODULE Module() const noexcept { return m_module; }

  private:
    static void WINAPI Forward(void* pProvider, const char* pCall);

    HMODULE m_module = nullptr;
    SimConfigureFunction* m_pConfigure = nullptr;
    SimExpectTokenFunction* m_pExpectToken = nullptr;
    SimReportFunction* m_pReport = nullptr;
    SimDefaultTicketFunction* m_pDefaultTicket = nullptr;
    SimResetFunction* m_pReset = nullptr;
    SimFinishFunction* m_pFinish = nullptr;
    SimListenFunction* m_pListen = nullptr;
    std::mutex m_lock;
    std::shared_ptr<const Listener> m_pListener;
};

}  // namespace devkit::prntvpt
