#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/prntvpt.h"

namespace devkit::prntvpt {

enum class FaultMode : std::uint8_t {
    OpenDenied,
    OpenGone,
    OpenRpc,
    MergeRefuseBase,
    MergeRefuseDelta,
    MergeFail,
    MergeOutOfMemory,
    PlainSuccess,
    Conflict,
    ConflictSilent,
    OutEmpty,
    OutTruncated,
    OutNotXml,
    OutWrongRoot,
    OutDuplicate,
    OutMissing,
    OutBadValue,
    OutRewound,
    OutShortWrite,
    Slow,
    CapabilitiesNotImplemented,
    CapabilitiesFail,
    CapabilitiesNoImageable,
    CapabilitiesZeroExtent,
    TextNullOnError,
    TextOnSuccess,
};

// What is to go wrong, and when. control.h describes the modes.
struct Fault {
    FaultMode mode = FaultMode::MergeFail;
    std::string argument;  // a feature, or milliseconds
    std::size_t nth = 0;   // 0: every call
    std::optional<EPrintTicketScope> scope;
    std::string text;  // as it was configured
};

// Reads MODE[:ARGUMENT][@N][:SCOPE]. std::invalid_argument, one line, when it is none.
[[nodiscard]] Fault ParseFault(std::string_view text);

enum class FaultTarget { Open, Merge, Capabilities };

// The faults that strike one call.
class ActiveFaults {
  public:
    explicit ActiveFaults(std::vector<Fault> faults) : m_faults(std::move(faults)) {}

    [[nodiscard]] const Fault* Find(FaultMode mode) const;
    [[nodiscard]] bool Has(FaultMode mode) const { return Find(mode) != nullptr; }
    // Waits as long as the faults want it.
    void Delay() const;

  private:
    std::vector<Fault> m_faults;
};

// Counts the calls that each fault waits for. Any thread may use it.
class FaultPlan {
  public:
    explicit FaultPlan(std::vector<Fault> faults);

    // Counts a call, and tells which faults strike it.
    [[nodiscard]] ActiveFaults Strike(FaultTarget target, std::optional<EPrintTicketScope> scope = {});
    void Reset();
    [[nodiscard]] std::span<const Fault> Faults() const noexcept { return m_faults; }
    // The texts of those that have not struck since the last Reset.
    [[nodiscard]] std::vector<std::string> Idle() const;

  private:
    const std::vector<Fault> m_faults;
    mutable std::mutex m_lock;
    std::vector<std::size_t> m_counts;
};

}  // namespace devkit::prntvpt
