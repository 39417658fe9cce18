#include "devkit/filterhost/summary.h"

#include <algorithm>
#include <cstddef>

#include "devkit/common/hresult.h"
#include "devkit/common/numbers.h"
#include "devkit/common/text.h"

namespace devkit::filterhost {
namespace {

using common::Describe;
using pipeline::RunOutcome;

std::string SizeText(const std::optional<package::PageDimensions>& page) {
    return page ? common::NumberText(page->width) + " x " + common::NumberText(page->height) : "unknown size";
}

std::string PageLine(std::size_t number, const PageFacts& page) {
    std::string line = "  page " + std::to_string(number) + " " + page.name + ": " + SizeText(page.before);
    if (page.rewritten) line += " -> " + SizeText(page.after);
    line += ", feed " + page.feedDirection.value_or("unset");
    line += page.turned ? ", turned" : page.rewritten ? ", rewritten, not turned" : ", not turned";
    line += ", sheet " + page.mediaSize.value_or("unset");
    if (!page.ticketReplaced) return line + ", ticket kept\n";
    return line + (page.ticketAfter ? ", new ticket " + *page.ticketAfter : ", ticket removed") + "\n";
}

std::string StateOf(const RunResult& result) {
    const RunOutcome& outcome = *result.outcome;
    if (outcome.hung) return "the filter hangs";
    if (outcome.cancelled) return "cancelled, " + common::Describe(outcome.result);
    return (FAILED(outcome.result) ? "failed, " : "done, ") + common::Describe(outcome.result);
}

std::string RunLine(const RunResult& result) {
    std::string line = result.input + " -> " + result.output.value_or("nothing written");
    if (!result.outcome) return line + ": not run\n";
    return line + ": " + common::Counted(result.outcome->parts.size(), "part") + ", " +
           common::Counted(result.pages.size(), "page") + ", " + StateOf(result) + "\n";
}

std::string ProviderLine(const prntvpt::ProviderReport& report) {
    std::string calls;
    std::size_t total = 0;
    for (const auto& [function, count] : report.counts) {
        calls += (calls.empty() ? "" : ", ") + function + " " + std::to_string(count);
        total += count;
    }
    const auto asUser = std::count_if(report.calls.begin(), report.calls.end(), [](const auto& call) {
        return call.impersonating && call.expectedToken.value_or(false);
    });
    std::string line = "  print ticket provider: " + common::Counted(total, "call");
    if (total == 0) return line + "\n";
    line += " (" + calls + "), " + std::to_string(asUser) + " of them as the user";
    return line + ", " + common::Counted(report.openHandles.size(), "handle") + " left open\n";
}

std::string FailureLine(const RunOutcome& outcome) {
    std::string line = FAILED(outcome.initialized) ? "InitializeFilter of the filter failed with "
                                                   : "the filter failed with ";
    line += common::Describe(outcome.result);
    return outcome.lastPart.empty() ? line + ", before any part" : line + ", at " + outcome.lastPart;
}

}  // namespace

std::string WriteSummary(const RunResult& result) {
    std::string text = RunLine(result);
    for (std::size_t i = 0; i < result.pages.size(); ++i) text += PageLine(i + 1, result.pages[i]);
    if (result.provider) text += ProviderLine(*result.provider);
    for (const std::string& finding : result.findings) text += "  finding: " + finding + "\n";
    return text;
}

std::vector<std::string> WriteProblems(const RunResult& result) {
    std::vector<std::string> lines;
    const auto add = [&](const std::string& text) { lines.push_back(result.input + ": " + text); };
    if (result.error) add(*result.error);
    if (result.outcome) {
        for (const std::string& failure : result.outcome->inputFailures) add(failure);
        if (FAILED(result.outcome->result) && !result.outcome->hung) add(FailureLine(*result.outcome));
    }
    for (const std::string& breach : result.breaches) add("breach: " + breach);
    return lines;
}

}  // namespace devkit::filterhost
