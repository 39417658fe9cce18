#include "devkit/validate/judging.h"

#include <algorithm>
#include <utility>

#include "devkit/common/numbers.h"
#include "devkit/common/text.h"
#include "devkit/filterhost/summary.h"

namespace devkit::validate {
namespace {

constexpr const char* kEndOfParts = "the end of the parts";

std::string DoneTo(const filterhost::PartFacts& part) {
    std::string text = part.name.empty() ? part.kind : part.kind + " " + part.name;
    if (part.page) {
        if (part.page->after) {
            text += ", " + common::NumberText(part.page->after->width) + " x " +
                    common::NumberText(part.page->after->height);
        }
        if (part.page->rewritten) text += ", rewritten";
        if (part.page->turned) text += ", turned";
        if (part.page->malformed) text += ", malformed";
    }
    if (part.ticketAfter != part.ticketBefore) text += part.ticketAfter ? ", new ticket" : ", no ticket";
    return text;
}

}  // namespace

std::vector<std::string> FailuresOf(const RunResult& result) {
    std::vector<std::string> lines;
    const std::string before = result.input + ": ";
    for (const std::string& line : filterhost::WriteProblems(result)) {
        const std::string text = line.starts_with(before) ? line.substr(before.size()) : line;
        if (!text.starts_with("breach: ")) lines.push_back(text);
    }
    if (result.end && result.end->hung) lines.emplace_back("the filter hangs");
    return lines;
}

bool IsWhole(const RunResult& result) { return !result.crash && result.end && result.end->whole; }

void ExpectWhole(const RunResult& result) {
    if (!IsWhole(result)) throw Skipped("the filter did not come to a good end with " + result.input);
    if (result.end->bytes) throw Skipped("the filter sends no parts");
}

std::vector<std::string> PartsGiven(const RunResult& result) {
    std::vector<std::string> parts;
    for (const std::string& part : result.given) {
        if (part != kEndOfParts) parts.push_back(part);
    }
    return parts;
}

std::vector<std::string> PartsSent(const RunResult& result) {
    std::vector<std::string> parts;
    for (const filterhost::PartFacts& part : result.parts)
        parts.push_back(part.name.empty() ? part.kind : part.kind + " " + part.name);
    return parts;
}

std::vector<std::string> Beyond(std::vector<std::string> list, const std::vector<std::string>& other) {
    for (const std::string& each : other) {
        const auto found = std::ranges::find(list, each);
        if (found != list.end()) list.erase(found);
    }
    return list;
}

void FailWith(Trial& trial, const Order& order, const RunResult& result,
              const std::vector<common::Check>& checks) {
    for (const std::vector<filterhost::Problem>* const pList : {&result.breaches, &result.findings}) {
        for (const filterhost::Problem& problem : *pList) {
            const common::CheckFacts* const pFacts = common::FindCheck(problem.id);
            if (pFacts != nullptr && std::ranges::find(checks, pFacts->check) != checks.end())
                trial.Fail(order, problem);
        }
    }
}

void FailWithBreaches(Trial& trial, const Order& order, const RunResult& result,
                      const std::vector<common::Check>& excused) {
    for (const filterhost::Problem& problem : result.breaches) {
        const common::CheckFacts* const pFacts = common::FindCheck(problem.id);
        const bool isExcused =
            pFacts != nullptr && std::ranges::find(excused, pFacts->check) != excused.end();
        if (!isExcused) trial.Fail(order, problem);
    }
}

bool IsIdle(const RunResult& result) {
    return result.status == filterhost::WrongUsage && result.end && !result.crash;
}

std::vector<std::string> DoneToParts(const RunResult& result) {
    std::vector<std::string> done;
    for (const filterhost::PartFacts& part : result.parts) done.push_back(DoneTo(part));
    return done;
}

std::optional<std::string> DifferenceFrom(const std::vector<std::string>& expected,
                                          const std::vector<std::string>& actual) {
    for (std::size_t i = 0; i < std::min(expected.size(), actual.size()); ++i) {
        if (expected[i] != actual[i]) return "what is sent is " + actual[i] + " instead of " + expected[i];
    }
    if (actual.size() == expected.size()) return std::nullopt;
    return "the filter sent " + common::Counted(actual.size(), "part") + " instead of " +
           std::to_string(expected.size());
}

std::optional<std::string> DifferenceFrom(const RunResult& expected, const RunResult& actual) {
    return DifferenceFrom(DoneToParts(expected), DoneToParts(actual));
}

void ExpectAsPlain(Trial& trial, const Order& order, const RunResult& result, const RunResult& plain) {
    const std::vector<std::string> failures = FailuresOf(result);
    for (const std::string& failure : failures) trial.Fail(order, result, failure);
    FailWithBreaches(trial, order, result);
    if (!failures.empty() || !result.breaches.empty()) return;
    if (const auto difference = DifferenceFrom(plain, result)) trial.Fail(order, result, *difference);
}

std::function<void(Trial&)> ComesToNone(std::vector<common::Check> checks) {
    return [checks = std::move(checks)](Trial& trial) {
        const std::vector<Document> documents = trial.Documents({kShort, kEverything});
        std::string notJudged;
        for (const Document& document : documents) {
            const RunResult& result = trial.Plain(document).result;
            FailWith(trial, trial.OrderFor(document), result, checks);
            if (result.crash || !result.end) notJudged = document.name;
        }
        if (!notJudged.empty() && trial.FailureCount() == 0)
            throw Skipped("the filter did not come to an end with " + notJudged);
    };
}

}  // namespace devkit::validate
