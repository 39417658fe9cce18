#include "devkit/filterhost/summary.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <map>

#include "devkit/common/hresult.h"
#include "devkit/common/numbers.h"
#include "devkit/common/text.h"
#include "devkit/filterhost/effectivetickets.h"

namespace devkit::filterhost {
namespace {

using common::Counted;
using common::Describe;

constexpr const char* kEndOfParts = "the end of the parts";

std::string SizeText(const std::optional<PageSize>& page) {
    return page ? common::NumberText(page->width) + " x " + common::NumberText(page->height) : "unknown size";
}

std::string PageLines(const RunResult& result) {
    const std::vector<EffectiveTicket> tickets = EffectiveTickets(result);
    std::string lines;
    std::size_t number = 0;
    auto ticket = tickets.begin();
    for (const PartFacts& part : result.parts) {
        const EffectiveTicket& effective = *ticket++;
        if (part.kind != "FixedPage") continue;
        ++number;
        if (!part.page) continue;
        lines += "  page " + std::to_string(number) + " " + part.name + ": " +
                 DecisionText(part, effective.facts) + "\n";
    }
    return lines;
}

std::string StateOf(const RunResult& result) {
    if (result.crash) return "the filter did not come to its end";
    if (!result.inputFailures.empty()) return "the input is damaged";
    const RunEnd& end = *result.end;
    if (end.hung) return "the filter hangs";
    if (end.cancelled) return "cancelled, " + Describe(end.result);
    return (FAILED(end.result) ? "failed, " : "done, ") + Describe(end.result);
}

std::string RunLine(const RunResult& result) {
    std::string line = result.input + " -> " + result.output.value_or("nothing written");
    if (!result.end && !result.crash) return line + ": not run\n";
    const auto pages = std::ranges::count(result.parts, std::string("FixedPage"), &PartFacts::kind);
    if (result.end && result.end->bytes)
        return line + ": " + Counted(*result.end->bytes, "byte") + ", " + StateOf(result) + "\n";
    return line + ": " + Counted(result.parts.size(), "part") + ", " +
           Counted(static_cast<std::size_t>(pages), "page") + ", " + StateOf(result) + "\n";
}

std::string ProviderLine(const RunResult& result) {
    std::map<std::string, std::size_t> counts;
    std::size_t asUser = 0;
    for (const MadeCall& made : result.providerCalls) {
        ++counts[made.call.function];
        asUser += made.call.impersonating && made.call.expectedToken.value_or(false);
    }
    std::string calls;
    for (const auto& [function, count] : counts) {
        calls += (calls.empty() ? "" : ", ") + function + " " + std::to_string(count);
    }
    std::string line = "  print ticket provider: " + Counted(result.providerCalls.size(), "call");
    if (calls.empty()) return line + "\n";
    line += " (" + calls + "), " + std::to_string(asUser) + " of them as the user";
    return line + ", " + Counted(result.provider->openHandles.size(), "handle") + " left open\n";
}

std::string Seconds(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f s", seconds);
    return text.data();
}

// "  time: 1.234 s; the filter 0.500 s, the print ticket provider 0.300 s, the pipeline 0.200 s, the rest
// 0.234 s".
std::string TimeLine(const RunTimes& times) {
    std::string line = "  time: " + Seconds(times.total) + "; ";
    const bool isChain = times.filters.size() > 1;
    for (const FilterTimes& each : times.filters) {
        line += (isChain ? each.name : "the filter") + " " + Seconds(each.filter);
        if (each.ticketProvider) line += ", the print ticket provider " + Seconds(*each.ticketProvider);
        line += ", the pipeline " + Seconds(each.pipeline) + (isChain ? "; " : ", ");
    }
    return line + "the rest " + Seconds(times.Rest()) + "\n";
}

std::string TitleOf(const PartFacts& part) {
    return part.name.empty() ? part.kind : part.kind + " " + part.name;
}

// The first few names, and how many there are beside.
std::string Some(const std::vector<std::string>& names) {
    constexpr std::size_t kShown = 5;
    std::string text;
    for (std::size_t i = 0; i < std::min(names.size(), kShown); ++i) text += (i == 0 ? "" : ", ") + names[i];
    if (names.size() > kShown) text += " and " + std::to_string(names.size() - kShown) + " more";
    return text;
}

// Takes what the second list has, once each, out of the first.
std::vector<std::string> Without(std::vector<std::string> names, const std::vector<std::string>& others) {
    std::map<std::string, std::size_t> counts;
    for (const std::string& other : others) ++counts[other];
    std::erase_if(names, [&](const std::string& name) {
        const auto count = counts.find(name);
        if (count == counts.end() || count->second == 0) return false;
        --count->second;
        return true;
    });
    return names;
}

// The first of the parts that came before one that it stood behind.
std::string OrderText(const std::vector<std::string>& given, const std::vector<std::string>& sent) {
    const auto [before, after] = std::ranges::mismatch(given, sent);
    if (before == given.end() || after == sent.end()) return {};
    return "; in another order: " + *after + " before " + *before;
}

// What a filter that came to its end did with the parts, unless it passed on all of them in their order.
std::string PartsLine(const RunResult& result) {
    if (!result.end || result.crash || FAILED(result.end->result) || result.end->cancelled) return {};
    // A filter of streams has no parts.
    if (result.given.empty() || result.end->bytes) return {};
    std::vector<std::string> given;
    for (const std::string& title : result.given) {
        if (title != kEndOfParts) given.push_back(title);
    }
    std::vector<std::string> sent;
    for (const PartFacts& part : result.parts) sent.push_back(TitleOf(part));
    const bool isRead = given.size() == result.inputParts;
    if (isRead && given == sent) return {};
    std::string line = "  of " + Counted(result.inputParts, "part") + " the filter read " +
                       std::to_string(given.size()) + " and sent " + std::to_string(sent.size());
    const std::vector<std::string> dropped = Without(given, sent);
    const std::vector<std::string> added = Without(sent, given);
    if (!dropped.empty()) line += "; dropped: " + Some(dropped);
    if (!added.empty()) line += "; added: " + Some(added);
    return line + OrderText(Without(given, dropped), Without(sent, added)) + "\n";
}

// The calls that had not come back: those of several filters, or StartOperation and ShutdownOperation.
std::string Where(const RunResult& result) {
    std::string text;
    for (const std::string& call : result.underWay) text += (text.empty() ? ", in " : " and ") + call;
    return text + (result.given.empty() ? ", before any part" : ", at " + result.given.back());
}

std::string FailureLine(const RunResult& result) {
    const RunEnd& end = *result.end;
    const std::string who = end.filter.empty() ? "the filter" : end.filter;
    if (end.threadEnded) return who + " ended its thread" + Where(result);
    std::string line =
        FAILED(end.initialized) ? "InitializeFilter of " + who + " failed with " : who + " failed with ";
    line += Describe(end.result);
    // Of a chain it is known what the first filter had in hand, which need not be the one.
    if (!end.filter.empty()) return line;
    return result.given.empty() ? line + ", before any part" : line + ", at " + result.given.back();
}

}  // namespace

std::string DecisionText(const PartFacts& part, const printschema::TicketFacts& effective) {
    const PageFacts& page = *part.page;
    // A page that the filter made has only the one size.
    std::string text = page.rewritten ? SizeText(page.before) + " -> " : "";
    text += SizeText(page.after);
    const bool isOwn = page.ticketReplaced && part.ticketAfter;
    const std::optional<std::string>& sheet = (isOwn ? page.newTicket : effective).mediaSize;
    // Which way a page is to lie is no question for a filter that has to do with no tickets.
    const bool isDecided = effective.feedDirection || sheet;
    const bool isTurned = isDecided && page.turned;
    if (effective.feedDirection) text += ", feed " + *effective.feedDirection;
    if (page.rewritten && !isTurned) text += ", rewritten";
    if (isDecided) text += isTurned ? ", turned" : ", not turned";
    if (sheet) text += ", sheet " + *sheet;
    if (!page.ticketReplaced) return text + (part.ticketBefore ? ", ticket kept" : "");
    return text + (isOwn ? ", new ticket " + *part.ticketAfter : ", ticket removed");
}

std::string WriteSummary(const RunResult& result) {
    std::string text = RunLine(result) + PageLines(result) + PartsLine(result);
    if (result.provider) text += ProviderLine(result);
    if (!result.missing.empty()) text += "  asked for, but not there: " + Some(result.missing) + "\n";
    for (const Problem& finding : result.findings) text += "  finding: " + finding.text + "\n";
    if (result.times) text += TimeLine(*result.times);
    return text;
}

std::vector<std::string> WriteProblems(const RunResult& result) {
    std::vector<std::string> lines;
    const auto add = [&](const std::string& text) { lines.push_back(result.input + ": " + text); };
    for (const std::string& error : result.errors) add(error);
    for (const std::string& failure : result.inputFailures) add(failure);
    if (result.crash) add(TextOf(*result.crash) + Where(result));
    const bool hasFailed = result.end && (FAILED(result.end->result) || result.end->threadEnded);
    if (hasFailed && !result.end->hung) add(FailureLine(result));
    if (result.end && !hasFailed && SUCCEEDED(result.end->result)) {
        for (const HRESULT code : result.end->shutdownCodes) {
            if (FAILED(code)) add("the filter succeeded, but called RequestShutdown with " + Describe(code));
        }
    }
    for (const Problem& breach : result.breaches) add("breach: " + breach.text);
    return lines;
}

}  // namespace devkit::filterhost
