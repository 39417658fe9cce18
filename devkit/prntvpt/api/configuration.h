#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/prntvpt/api/fault.h"
#include "devkit/prntvpt/api/lastticket.h"
#include "devkit/prntvpt/control/messages.h"
#include "devkit/prntvpt/device/device.h"
#include "devkit/prntvpt/merge/switches.h"

namespace devkit::prntvpt {

// A configuration that makes no sense, or whose device model does not; one line.
class ConfigurationError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// What a simulation runs with. It does not change, but for the counters of the faults and the base ticket
// that was read last, as the behaviour reads tickets.
struct Configuration {
    std::filesystem::path folder;
    Device device;
    Switches behaviour;
    std::unique_ptr<FaultPlan> pFaults;
    std::unique_ptr<LastTicket> pLastBase = std::make_unique<LastTicket>();
    bool recordTickets = true;
    bool recordCalls = true;

    // The names compare as those of files do, without regard to case.
    [[nodiscard]] bool HasPrinter(std::wstring_view name) const;
    // As a report shows it.
    [[nodiscard]] ProviderConfiguration Describe() const;
};

// Reads the device model that the settings name. ConfigurationError.
[[nodiscard]] std::shared_ptr<const Configuration> MakeConfiguration(const ProviderSettings& settings);
// The same for the JSON of control.h.
[[nodiscard]] std::shared_ptr<const Configuration> ParseConfiguration(std::string_view json);

// The default ticket of the device with its variants, written as the behaviour wants it.
[[nodiscard]] std::string DefaultTicketOf(const Configuration& configuration);

}  // namespace devkit::prntvpt
