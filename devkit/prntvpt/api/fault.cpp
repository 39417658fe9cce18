#include "devkit/prntvpt/api/fault.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <utility>

#include "devkit/printschema/names.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

enum class Argument { None, Optional, Feature, Number };
// All: a fault of the open, merge and capabilities functions alike.
enum class Reach { Open, Merge, Capabilities, All };

struct ModeRow {
    std::string_view name;
    FaultMode mode;
    Reach reach;
    Argument argument = Argument::None;
};

constexpr std::array<ModeRow, 26> kModes{{
    {"open-denied", FaultMode::OpenDenied, Reach::Open},
    {"open-gone", FaultMode::OpenGone, Reach::Open},
    {"open-rpc", FaultMode::OpenRpc, Reach::Open},
    {"merge-refuse-base", FaultMode::MergeRefuseBase, Reach::Merge},
    {"merge-refuse-delta", FaultMode::MergeRefuseDelta, Reach::Merge},
    {"merge-fail", FaultMode::MergeFail, Reach::Merge},
    {"merge-oom", FaultMode::MergeOutOfMemory, Reach::Merge},
    {"s-ok", FaultMode::PlainSuccess, Reach::Merge},
    {"conflict", FaultMode::Conflict, Reach::Merge, Argument::Optional},
    {"conflict-silent", FaultMode::ConflictSilent, Reach::Merge, Argument::Optional},
    {"out-empty", FaultMode::OutEmpty, Reach::Merge},
    {"out-truncated", FaultMode::OutTruncated, Reach::Merge},
    {"out-notxml", FaultMode::OutNotXml, Reach::Merge},
    {"out-wrongroot", FaultMode::OutWrongRoot, Reach::Merge},
    {"out-duplicate", FaultMode::OutDuplicate, Reach::Merge},
    {"out-missing", FaultMode::OutMissing, Reach::Merge, Argument::Feature},
    {"out-bad-value", FaultMode::OutBadValue, Reach::Merge},
    {"out-rewound", FaultMode::OutRewound, Reach::Merge},
    {"out-shortwrite", FaultMode::OutShortWrite, Reach::Merge},
    {"slow", FaultMode::Slow, Reach::All, Argument::Number},
    {"caps-notimpl", FaultMode::CapabilitiesNotImplemented, Reach::Capabilities},
    {"caps-fail", FaultMode::CapabilitiesFail, Reach::Capabilities},
    {"caps-noimageable", FaultMode::CapabilitiesNoImageable, Reach::Capabilities},
    {"caps-zero-extent", FaultMode::CapabilitiesZeroExtent, Reach::Capabilities},
    {"bstr-null-on-error", FaultMode::TextNullOnError, Reach::All},
    {"bstr-on-success", FaultMode::TextOnSuccess, Reach::All},
}};

[[nodiscard]] const ModeRow& RowOf(FaultMode mode) {
    return *std::find_if(kModes.begin(), kModes.end(), [&](const ModeRow& row) { return row.mode == mode; });
}

[[nodiscard]] bool Reaches(const Fault& fault, FaultTarget target, std::optional<EPrintTicketScope> scope) {
    const Reach reach = RowOf(fault.mode).reach;
    const bool hit = reach == Reach::All || (reach == Reach::Open && target == FaultTarget::Open) ||
                     (reach == Reach::Merge && target == FaultTarget::Merge) ||
                     (reach == Reach::Capabilities && target == FaultTarget::Capabilities);
    return hit && (!fault.scope || fault.scope == scope);
}

[[nodiscard]] std::invalid_argument Refuse(std::string_view text, const char* why) {
    return std::invalid_argument("fault " + std::string(text) + ": " + why);
}

[[nodiscard]] bool IsNumber(std::string_view text, std::size_t& number) {
    const char* const pEnd = text.data() + text.size();
    const auto [pStop, error] = std::from_chars(text.data(), pEnd, number);
    return error == std::errc() && pStop == pEnd;
}

// Takes ":SCOPE" off the end, when there is one.
[[nodiscard]] std::optional<EPrintTicketScope> CutScope(std::string_view& text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const std::optional<EPrintTicketScope> scope = ScopeByName(text.substr(colon + 1));
    if (scope) text = text.substr(0, colon);
    return scope;
}

void RequireArgument(const ModeRow& row, const Fault& fault, std::string_view text) {
    std::size_t milliseconds = 0;
    switch (row.argument) {
        case Argument::None:
            if (!fault.argument.empty()) throw Refuse(text, "takes no argument");
            break;
        case Argument::Optional:
            break;
        case Argument::Feature:
            if (fault.argument.empty()) throw Refuse(text, "needs the name of a feature");
            break;
        case Argument::Number:
            if (!IsNumber(fault.argument, milliseconds) || milliseconds > 60'000) {
                throw Refuse(text, "needs milliseconds, at most 60000");
            }
            break;
    }
}

}  // namespace

Fault ParseFault(std::string_view text) {
    Fault fault;
    fault.text = text;
    std::string_view rest = text;
    fault.scope = CutScope(rest);
    if (const std::size_t at = rest.rfind('@'); at != std::string_view::npos) {
        if (!IsNumber(rest.substr(at + 1), fault.nth) || fault.nth == 0) {
            throw Refuse(text, "the number of the call is none");
        }
        rest = rest.substr(0, at);
    }
    const std::size_t colon = rest.find(':');
    const std::string_view name = rest.substr(0, colon);
    if (colon != std::string_view::npos) fault.argument = rest.substr(colon + 1);
    const auto row =
        std::find_if(kModes.begin(), kModes.end(), [&](const ModeRow& mode) { return mode.name == name; });
    if (row == kModes.end()) throw Refuse(text, "there is no such mode");
    if (fault.scope && row->reach != Reach::Merge && row->reach != Reach::All) {
        throw Refuse(text, "only merges have a scope");
    }
    fault.mode = row->mode;
    RequireArgument(*row, fault, text);
    return fault;
}

const Fault* ActiveFaults::Find(FaultMode mode) const {
    const auto found = std::find_if(m_faults.begin(), m_faults.end(),
                                    [&](const Fault& fault) { return fault.mode == mode; });
    return found == m_faults.end() ? nullptr : &*found;
}

void ActiveFaults::Delay() const {
    if (const Fault* const pFault = Find(FaultMode::Slow))
        Sleep(static_cast<DWORD>(std::stoul(pFault->argument)));
}

FaultPlan::FaultPlan(std::vector<Fault> faults) : m_faults(std::move(faults)), m_counts(m_faults.size()) {}

ActiveFaults FaultPlan::Strike(FaultTarget target, std::optional<EPrintTicketScope> scope) {
    const std::lock_guard guard(m_lock);
    std::vector<Fault> active;
    for (std::size_t index = 0; index < m_faults.size(); ++index) {
        const Fault& fault = m_faults[index];
        if (!Reaches(fault, target, scope)) continue;
        ++m_counts[index];
        if (fault.nth == 0 || fault.nth == m_counts[index]) active.push_back(fault);
    }
    return ActiveFaults(std::move(active));
}

std::vector<std::string> FaultPlan::Idle() const {
    const std::lock_guard guard(m_lock);
    std::vector<std::string> idle;
    for (std::size_t index = 0; index < m_faults.size(); ++index) {
        if (m_counts[index] < std::max<std::size_t>(m_faults[index].nth, 1))
            idle.push_back(m_faults[index].text);
    }
    return idle;
}

void FaultPlan::Reset() {
    const std::lock_guard guard(m_lock);
    std::fill(m_counts.begin(), m_counts.end(), 0);
}

}  // namespace devkit::prntvpt
