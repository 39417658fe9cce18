#include "devkit/validate/verdict.h"

#include <algorithm>

#include "devkit/common/numbers.h"
#include "devkit/common/text.h"

namespace devkit::validate {
namespace {

// As wide as the longest name in the battery.
std::size_t NameWidth() {
    std::size_t width = 0;
    for (const Test& test : Battery()) width = std::max(width, test.name.size());
    return width;
}

std::string Padded(std::string text, std::size_t width) {
    if (text.size() < width) text.append(width - text.size(), ' ');
    return text;
}

std::string Right(const std::string& text, std::size_t width) {
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

constexpr std::size_t kLevelWidth = 5;
constexpr std::size_t kResultWidth = 7;
constexpr std::size_t kSecondsWidth = 8;

}  // namespace

const char* NameOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Passed:
            return "passed";
        case Verdict::Failed:
            return "failed";
        case Verdict::Skipped:
            break;
    }
    return "skipped";
}

void Tally::Add(const TestResult& result) {
    ++(result.verdict == Verdict::Passed ? passed : result.verdict == Verdict::Failed ? failed : skipped);
}

filterhost::ExitStatus Tally::Status() const {
    if (failed != 0) return filterhost::FilterFailed;
    return passed == 0 ? filterhost::WrongUsage : filterhost::Done;
}

std::string TableHead() {
    return Right("level", kLevelWidth) + "  " + Padded("test", NameWidth()) + "  " +
           Padded("result", kResultWidth) + "  " + Right("seconds", kSecondsWidth) + "\n";
}

std::string TableLine(const TestResult& result) {
    std::string line =
        Right(std::to_string(result.pTest->level), kLevelWidth) + "  " +
        Padded(std::string(result.pTest->name), NameWidth()) + "  " +
        Padded(result.verdict == Verdict::Failed ? "FAILED" : NameOf(result.verdict), kResultWidth) + "  " +
        Right(common::NumberText(result.seconds, 1), kSecondsWidth);
    if (result.verdict == Verdict::Skipped) line += "  " + result.reason;
    return line + "\n";
}

std::string WriteFailures(const TestResult& result) {
    if (result.verdict != Verdict::Failed) return {};
    std::string text = "\nFAILED " + std::string(result.pTest->name) + " (level " +
                       std::to_string(result.pTest->level) + "): " + std::string(result.pTest->claim) + "\n";
    for (const Failure& failure : result.failures) {
        text += "  " + (failure.run.empty() ? "" : failure.run + ": ") + failure.text + "\n";
        std::string where;
        if (!failure.part.empty()) where += "at " + failure.part;
        if (!failure.call.empty()) where += (where.empty() ? "in " : ", in ") + failure.call;
        if (!where.empty()) text += "    " + where + "\n";
        text += "    what to do: " + failure.advice + "\n";
    }
    if (result.failureCount > result.failures.size()) {
        text += "  and " + std::to_string(result.failureCount - result.failures.size()) + " more\n";
    }
    return text;
}

std::string WriteVerdict(const std::string& filter, const Tally& tally, unsigned level) {
    const std::string atLevel = " at level " + std::to_string(level) + ": ";
    if (tally.failed + tally.passed == 0)
        return "nothing is known of " + filter + atLevel + std::to_string(tally.skipped) + " skipped";
    std::string text = filter + (tally.failed == 0 ? " is fit" : " is not fit") + atLevel;
    if (tally.failed != 0) text += common::Counted(tally.failed, "test") + " failed, ";
    text += std::to_string(tally.passed) + " passed";
    return tally.skipped == 0 ? text : text + ", " + std::to_string(tally.skipped) + " skipped";
}

std::string ListTests(unsigned level) {
    std::string text;
    for (const Test& test : Battery()) {
        if (test.level > level) continue;
        text += Right(std::to_string(test.level), 2) + "  " + Padded(std::string(test.name), NameWidth()) +
                "  " + std::string(test.claim) + "\n";
    }
    return text;
}

}  // namespace devkit::validate
