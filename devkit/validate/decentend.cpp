#include "devkit/validate/decentend.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "devkit/common/hresult.h"

namespace devkit::validate {
namespace {

using common::Check;

// The codes that a filter may fail with whatever has failed under it.
constexpr std::array kGeneralCodes = {E_FAIL, E_UNEXPECTED, E_OUTOFMEMORY, E_ABORT, E_POINTER};

bool IsAllowed(HRESULT answer, HRESULT code) {
    return answer == code || std::ranges::find(kGeneralCodes, answer) != kGeneralCodes.end();
}

bool HasFinding(const RunResult& result, Check check) {
    return std::ranges::any_of(
        result.findings, [id = common::FactsOf(check).id](const auto& finding) { return finding.id == id; });
}

// What is wrong with the end of the run; nothing when it is a decent one.
std::optional<std::string> WrongEnd(const RunResult& result, HRESULT code, unsigned ends,
                                    const RunResult& plain) {
    const filterhost::RunEnd& end = *result.end;
    const HRESULT answer = end.result;
    if (SUCCEEDED(answer)) {
        if (PartsSent(result) != PartsSent(plain)) return "the filter succeeds, and not every part was sent";
        if ((ends & kComesThrough) == 0) return "the filter succeeds, as if the call had";
        return std::nullopt;
    }
    if (!IsAllowed(answer, code))
        return "the filter fails with " + common::Describe(answer) +
               ", which is neither the call's code nor a general one";
    // Whoever called InitializeFilter has its answer.
    const bool isUntold = SUCCEEDED(end.initialized) && HasFinding(result, Check::SilentFailure);
    if (isUntold && (ends & kFailsUntold) == 0)
        return "the filter fails with " + common::Describe(answer) + " without a RequestShutdown";
    return std::nullopt;
}

}  // namespace

void JudgeEnd(Trial& trial, const Order& order, const RunResult& result, HRESULT code, unsigned ends,
              const RunResult& plain) {
    FailWithBreaches(trial, order, result);
    if (result.crash || !result.end || result.end->hung || result.end->threadEnded) {
        for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
        return;
    }
    if (const auto wrong = WrongEnd(result, code, ends, plain)) trial.Fail(order, result, *wrong);
    std::vector<Check> damage = {Check::MalformedMarkup, Check::PageSize, Check::ResourceDeleted};
    if ((ends & kBadTicket) == 0) damage.push_back(Check::TicketFormat);
    if (SUCCEEDED(result.end->result)) FailWith(trial, order, result, damage);
}

}  // namespace devkit::validate
