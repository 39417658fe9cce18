#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "devkit/filterhost/settings.h"
#include "devkit/prntvpt/client/simulatedprovider.h"

namespace devkit::filterhost {

// A handle of the printer, where the system has one of that name.
class PrinterHandle {
  public:
    explicit PrinterHandle(const std::wstring& name);

    // Borrowed; null when the system does not know the printer.
    [[nodiscard]] HANDLE Get() const noexcept { return m_handle.get(); }

  private:
    struct Close {
        void operator()(HANDLE handle) const noexcept;
    };

    std::unique_ptr<void, Close> m_handle;
};

// The print ticket provider that the filter will be bound to: the simulated one, loaded and set up, or the
// system's own. Make it before the filter is loaded.
class TicketProvider {
  public:
    // Throws UsageError when the settings make no sense.
    explicit TicketProvider(const HostSettings& settings);

    [[nodiscard]] const std::string& PrinterName() const noexcept { return m_printer; }
    // The default print ticket of the device model.
    [[nodiscard]] const std::string& DefaultTicket() const noexcept { return m_defaultTicket; }

    // A run begins, with that token as its user's. The simulated provider tells `listener` of each call when
    // it ends, on the thread of the call, with the texts of the tickets when they are to be recorded.
    void BeginRun(HANDLE userToken, bool recordsTickets, prntvpt::SimulatedProvider::Listener listener);
    // The run is over, and nobody listens any longer. What the simulated provider saw beside the
    // calls; nothing for the system's, nor when the run was `abandoned` and the filter may still be at it.
    [[nodiscard]] std::optional<prntvpt::ProviderReport> EndRun(bool abandoned);

  private:
    void Configure(bool recordTickets);

    std::optional<prntvpt::SimulatedProvider> m_simulated;
    prntvpt::ProviderSettings m_settings;
    std::string m_printer;
    std::string m_defaultTicket;
};

// Throws UsageError when there could be no TicketProvider for the settings, as far as that can be told
// without one.
void CheckProvider(const HostSettings& settings);

}  // namespace devkit::filterhost
