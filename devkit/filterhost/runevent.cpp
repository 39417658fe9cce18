#include "devkit/filterhost/runevent.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <set>
#include <stdexcept>
#include <utility>

#ifdef __GNUC__
#include <cxxabi.h>
#endif

#include "devkit/common/hresult.h"
#include "devkit/common/json.h"

// The names of nlohmann's macros have to stand where the types do.
namespace devkit::printschema {
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(TicketFacts, mediaSize, feedDirection)
}

namespace devkit::filterhost {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PageSize, width, height)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PageFacts, before, after, bytesBefore, bytesAfter, rewritten, turned,
                                   ticketReplaced, newTicket, malformed)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PartFacts, kind, name, ticketBefore, ticketAfter, page)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(TicketTexts, own, replacement)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FilterEnd, name, initialized, operation, shutdownOperation, shutdownCodes,
                                   pipelineCalls)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(RunEnd, filter, initialized, result, shutdownCodes, hung, threadEnded,
                                   cancelled, whole, bytes, filters)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Crash, code, text, type, what)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(MadeCall, call, part)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FilterTimes, name, filter, ticketProvider, pipeline, observer)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(RunTimes, total, operations, filters)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(TraceMoment, kind, name, category, detail, thread, at, duration, own)

namespace events {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Opened, parts, pages, findings, userTicket, userTicketText)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(CallBegun, call)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(CallEnded, call)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PartAsked, number)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PartGiven, part)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PartSent, part, tickets)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ProviderCalled, made)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Breached, id, text)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(InputFailed, text)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Found, id, text)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Missed, what)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Noted, text)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Traced, moment)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(RunEnded, end)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ProviderEnded, report)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Timed, times)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(OutputWritten, output)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Failed, text, status)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Refused, text, status)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Crashed, crash)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Told, text)

void to_json(nlohmann::json& json, const Alive&) { json = nlohmann::json::object(); }
void from_json(const nlohmann::json&, Alive&) {}
void to_json(nlohmann::json& json, const Finished&) { json = nlohmann::json::object(); }
void from_json(const nlohmann::json&, Finished&) {}

}  // namespace events

namespace {

using common::Check;
using Json = nlohmann::json;

template <std::size_t... Index>
Event ReadAlternative(std::size_t wanted, const Json& json, std::index_sequence<Index...>) {
    Event event;
    const auto read = [&](auto index) {
        if (index != wanted) return false;
        event = json.get<std::variant_alternative_t<index, Event>>();
        return true;
    };
    if (!(read(std::integral_constant<std::size_t, Index>()) || ...)) {
        throw std::invalid_argument("there is no event " + std::to_string(wanted));
    }
    return event;
}

struct Applier {
    RunResult& result;

    void operator()(const events::Opened& event) const {
        result.inputParts = event.parts;
        result.inputPages = event.pages;
        for (const std::string& text : event.findings)
            result.findings.push_back(ProblemOf(Check::Document, text));
        result.userTicket = event.userTicket;
        result.userTicketText = result.texts.Add(event.userTicketText);
    }
    void operator()(const events::CallBegun& event) const { result.underWay.push_back(event.call); }
    void operator()(const events::CallEnded& event) const {
        // Calls on two threads need not end in the order of their begin.
        for (auto call = result.underWay.rbegin(); call != result.underWay.rend(); ++call) {
            if (*call != event.call) continue;
            result.underWay.erase(std::next(call).base());
            return;
        }
    }
    void operator()(const events::PartAsked& event) const { result.asked = event.number; }
    void operator()(const events::PartGiven& event) const { result.given.push_back(event.part); }
    void operator()(const events::PartSent& event) const {
        PartFacts part = event.part;
        part.ownTicket = result.texts.Add(event.tickets.own);
        part.newTicket = result.texts.Add(event.tickets.replacement);
        result.parts.push_back(std::move(part));
    }
    void operator()(const events::ProviderCalled& event) const {
        MadeCall made = event.made;
        made.base = result.texts.Add(std::exchange(made.call.base, std::nullopt));
        made.delta = result.texts.Add(std::exchange(made.call.delta, std::nullopt));
        made.output = result.texts.Add(std::exchange(made.call.output, std::nullopt));
        result.providerCalls.push_back(std::move(made));
    }
    void operator()(const events::Breached& event) const { result.breaches.push_back(Here(event)); }
    void operator()(const events::InputFailed& event) const { result.inputFailures.push_back(event.text); }
    void operator()(const events::Found& event) const { result.findings.push_back(Here(event)); }
    void operator()(const events::Missed& event) const { result.missing.push_back(event.what); }
    void operator()(const events::Noted&) const {}
    void operator()(const events::Alive&) const {}
    void operator()(const events::Traced&) const {}
    void operator()(const events::RunEnded& event) const { result.end = event.end; }
    void operator()(const events::ProviderEnded& event) const { result.provider = event.report; }
    void operator()(const events::Timed& event) const { result.times = event.times; }
    void operator()(const events::OutputWritten& event) const { result.output = event.output; }
    void operator()(const events::Failed& event) const {
        result.errors.push_back(event.text);
        result.status = std::max(result.status, event.status);
    }
    void operator()(const events::Refused& event) const { (*this)(events::Failed{event.text, event.status}); }
    void operator()(const events::Crashed& event) const {
        // What comes after it is a consequence.
        if (!result.crash) result.crash = event.crash;
    }
    void operator()(const events::Told& event) const { result.told.push_back(event.text); }
    void operator()(const events::Finished&) const {}

    // With what the filter was at when it happened.
    template <typename Complaint>
    [[nodiscard]] Problem Here(const Complaint& event) const {
        Problem problem{event.id, event.text};
        if (!result.given.empty()) problem.part = result.given.back();
        if (!result.underWay.empty()) problem.call = result.underWay.back();
        return problem;
    }
};

// As the program's source has it.
std::string TypeName(const std::string& type) {
#ifdef __GNUC__
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.c_str(), nullptr, nullptr, &status), &std::free);
    if (name) return name.get();
#endif
    return type;
}

// "PTMergeAndValidatePrintTicket (page)".
std::string TitleOf(const prntvpt::ProviderCall& call) {
    return call.scope ? call.function + " (" + *call.scope + ")" : call.function;
}

// "PTMergeAndValidatePrintTicket (page) answered 0x80040003 E_PRINTTICKET_FORMAT: Base ticket: ...".
std::string FailedCallText(const prntvpt::ProviderCall& call) {
    const std::string text = TitleOf(call) + " answered " + common::Describe(call.result);
    return call.error ? text + ": " + *call.error : text;
}

void AddProviderLines(RunResult& result) {
    constexpr const char* kWho = "print ticket provider: ";
    std::set<std::string> twoPrefixes;  // each is told once, with the first call that has it
    for (const MadeCall& made : result.providerCalls) {
        if (const auto& found = made.call.twoPrefixes; found && twoPrefixes.insert(*found).second) {
            result.findings.push_back(ProblemOf(
                Check::TicketTwoPrefixes,
                "the print ticket that " + TitleOf(made.call) + " was given to start from has " + *found,
                made.part, made.call.function));
        }
        if (SUCCEEDED(made.call.result)) continue;
        result.findings.push_back(ProblemOf(Check::ProviderFailure, kWho + FailedCallText(made.call),
                                            made.part, made.call.function));
    }
    if (!result.provider) return;
    for (const prntvpt::ProviderBreach& breach : result.provider->breaches) {
        result.breaches.push_back({breach.stop, kWho + breach.stop + " " + breach.text});
    }
    for (const std::string& note : result.provider->notes)
        result.findings.push_back(ProblemOf(Check::ProviderNote, kWho + note));
}

// Whoever waits for the job learns of a failure by RequestShutdown alone.
bool FailedSilently(const RunResult& result) {
    if (!result.end || result.end->hung || result.end->threadEnded || result.end->cancelled) return false;
    return SUCCEEDED(result.end->initialized) && FAILED(result.end->result) &&
           result.end->shutdownCodes.empty();
}

ExitStatus StatusOf(const RunResult& result) {
    if (!result.breaches.empty()) return RuleBroken;
    if (!result.inputFailures.empty()) return UnreadableInput;
    if (result.crash) return FilterFailed;
    if (!result.end) return result.status;
    const bool shutdown = std::any_of(result.end->shutdownCodes.begin(), result.end->shutdownCodes.end(),
                                      [](HRESULT hr) { return FAILED(hr); });
    return FAILED(result.end->result) || shutdown || result.end->threadEnded ? FilterFailed : Done;
}

}  // namespace

std::string WriteEvent(const Event& event) {
    const Json data = std::visit([](const auto& each) { return Json(each); }, event);
    return common::JsonText(Json{event.index(), data});
}

Event ReadEvent(std::string_view line) {
    const Json json = common::ParseJson(line);
    return ReadAlternative(json.at(0).get<std::size_t>(), json.at(1),
                           std::make_index_sequence<std::variant_size_v<Event>>());
}

double RunTimes::Rest() const noexcept {
    double rest = total - operations;
    // Of a chain the operations go on at the same time: what one spends on that, another may not wait for.
    if (filters.size() == 1) rest += filters.front().observer;
    return rest;
}

std::string TextOf(const Crash& crash) {
    if (crash.type.empty()) return crash.text;
    std::string text = crash.text + "; the last exception that it threw is " + TypeName(crash.type);
    return crash.what.empty() ? text : text + " (" + crash.what + ")";
}

void Apply(const Event& event, RunResult& result) { std::visit(Applier{result}, event); }

Problem ProblemOf(Check check, std::string text, std::string part, std::string call) {
    return {std::string(common::FactsOf(check).id), std::move(text), std::move(part), std::move(call)};
}

void Conclude(RunResult& result, bool strict) {
    for (const PartFacts& part : result.parts) {
        if (part.page && part.page->malformed)
            result.findings.push_back(ProblemOf(
                Check::MalformedMarkup, "page markup " + *part.page->malformed, part.kind + " " + part.name));
    }
    AddProviderLines(result);
    if (FailedSilently(result)) {
        result.findings.push_back(
            ProblemOf(Check::SilentFailure, "the filter failed without a RequestShutdown"));
    }
    result.status = std::max(result.status, StatusOf(result));
    if (strict && !result.findings.empty()) result.status = std::max(result.status, RuleBroken);
}

}  // namespace devkit::filterhost
