#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <optional>
#include <string>

#include "devkit/filterhost/settings.h"
#include "devkit/prntvpt/client/simulatedprovider.h"

namespace devkit::filterhost {

// The print ticket provider that the filter will be bound to: the simulated one, loaded and set up, or the
// system's own. Make it before the filter is loaded.
class TicketProvider {
  public:
    static constexpr std::size_t MaxRecordedPages = 2000;

    // Throws UsageError when the settings make no sense.
    explicit TicketProvider(const RunSettings& settings);

    [[nodiscard]] const std::string& PrinterName() const noexcept { return m_printer; }
    // The default print ticket of the device model.
    [[nodiscard]] const std::string& DefaultTicket() const noexcept { return m_defaultTicket; }

    // A run over so many pages begins, with that token as its user's. The tickets of a run of more than
    // MaxRecordedPages pages are not kept in the report: it would grow with each.
    void BeginRun(HANDLE userToken, std::size_t pages);
    // The run is over. What the simulated provider saw; nothing for the system's.
    [[nodiscard]] std::optional<prntvpt::ProviderReport> EndRun();

  private:
    void Configure(bool recordTickets);

    std::optional<prntvpt::SimulatedProvider> m_simulated;
    prntvpt::ProviderSettings m_settings;
    std::string m_printer;
    std::string m_defaultTicket;
};

}  // namespace devkit::filterhost
