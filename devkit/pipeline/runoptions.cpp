#include "devkit/pipeline/runoptions.h"

#include <array>
#include <charconv>
#include <limits>

#include "devkit/common/hresult.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

[[noreturn]] void Refuse(std::string_view key, std::string_view value, std::string_view wanted) {
    throw SwitchError(std::string(key) + "=" + std::string(value) + ": " + std::string(wanted));
}

template <typename Number = unsigned>
Number NumberOf(std::string_view key, std::string_view value) {
    Number number = 0;
    const auto [pEnd, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc() || pEnd != value.data() + value.size())
        Refuse(key, value, "is not a whole number");
    return number;
}

template <typename Value>
struct Choice {
    std::string_view name;
    Value value;
};

template <typename Value, std::size_t N>
Value ChoiceOf(std::string_view key, std::string_view text, const Choice<Value> (&choices)[N]) {
    std::string wanted = "is none of";
    for (const Choice<Value>& choice : choices) {
        if (choice.name == text) return choice.value;
        wanted.append(wanted.ends_with("of") ? " " : ", ").append(choice.name);
    }
    Refuse(key, text, wanted);
}

// "CALL@N+=CODE"
Fault FaultOf(std::string_view key, std::string_view text) {
    constexpr std::string_view kWanted = "is not CALL[@N[+]]=CODE";
    Fault fault;
    const std::size_t equals = text.rfind('=');
    if (equals == std::string_view::npos) Refuse(key, text, kWanted);
    const auto code = common::ParseHresult(text.substr(equals + 1));
    if (!code || SUCCEEDED(*code)) Refuse(key, text, "has no failing code at its end");
    fault.code = *code;
    std::string_view call = text.substr(0, equals);
    // An argument may hold what separates the other pieces.
    const std::size_t behind = call.rfind(')');
    const std::size_t at = call.find('@', behind == std::string_view::npos ? 0 : behind);
    if (at != std::string_view::npos) {
        std::string_view number = call.substr(at + 1);
        fault.onwards = number.ends_with('+');
        if (fault.onwards) number.remove_suffix(1);
        fault.nth = NumberOf(key, number);
        if (fault.nth == 0) Refuse(key, text, "counts calls from 1");
        call = call.substr(0, at);
    }
    const std::size_t open = call.find('(');
    if (open != std::string_view::npos) {
        if (!call.ends_with(')')) Refuse(key, text, kWanted);
        fault.argument = call.substr(open + 1, call.size() - open - 2);
        call = call.substr(0, open);
    }
    if (call.empty()) Refuse(key, text, kWanted);
    fault.method = call;
    return fault;
}

StreamKind StreamKindOf(std::string_view key, std::string_view value) {
    return ChoiceOf<StreamKind>(
        key, value,
        {{"xps", StreamKind::Xps}, {"unknown", StreamKind::Unrecognised}, {"null", StreamKind::None}});
}

using Setter = void (*)(RunOptions& options, std::string_view key, std::string_view value);

struct Switch {
    std::string_view key;
    Setter set;
};

constexpr auto kSwitches = std::to_array<Switch>({
    {"fail", [](RunOptions& options, std::string_view key,
                std::string_view value) { options.behaviour.faults.push_back(FaultOf(key, value)); }},
    {"short-reads", [](RunOptions& options, std::string_view key,
                       std::string_view value) { options.behaviour.maxBytesPerRead = NumberOf(key, value); }},
    {"short-writes",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         options.behaviour.maxBytesPerWrite = NumberOf(key, value);
     }},
    {"end-flag",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         options.behaviour.endFlag = ChoiceOf<EndFlag>(
             key, value, {{"with-data", EndFlag::WithLastData}, {"alone", EndFlag::AfterLastData}});
     }},
    {"missing-ticket",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         options.behaviour.missingPart = ChoiceOf<MissingPart>(
             key, value, {{"failure", MissingPart::NotFound}, {"null", MissingPart::SuccessWithNull}});
     }},
    {"after-cancel",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         options.behaviour.afterCancel = ChoiceOf<AfterCancel>(key, value,
                                                               {{"fail", AfterCancel::FailGetXpsPart},
                                                                {"end", AfterCancel::EndOfParts},
                                                                {"continue", AfterCancel::KeepGiving}});
     }},
    {"cancel",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         enum class Manner { Waits, Concurrent, Twice };
         const auto manner = ChoiceOf<Manner>(
             key, value,
             {{"waits", Manner::Waits}, {"concurrent", Manner::Concurrent}, {"twice", Manner::Twice}});
         options.cancelConcurrently = manner == Manner::Concurrent;
         options.cancelTwice = manner == Manner::Twice;
     }},
    {"reader", [](RunOptions& options, std::string_view key,
                  std::string_view value) { options.behaviour.reader = StreamKindOf(key, value); }},
    {"writer", [](RunOptions& options, std::string_view key,
                  std::string_view value) { options.behaviour.writer = StreamKindOf(key, value); }},
    {"ambiguous-document",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         options.behaviour.ambiguousDocument = ChoiceOf<bool>(key, value, {{"on", true}, {"off", false}});
     }},
    {"slow-part",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         options.behaviour.slowPart = std::chrono::milliseconds(NumberOf(key, value));
     }},
    {"apartment",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         options.apartment = ChoiceOf<Apartment>(
             key, value, {{"none", Apartment::None}, {"single", Apartment::SingleThreaded}});
     }},
    {"last-release",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         options.lastRelease = ChoiceOf<LastRelease>(
             key, value, {{"caller", LastRelease::Caller}, {"other-thread", LastRelease::OtherThread}});
     }},
    {"start",
     [](RunOptions& options, std::string_view key, std::string_view value) {
         options.startsOperation = ChoiceOf<bool>(key, value, {{"yes", true}, {"never", false}});
     }},
});

}  // namespace

void ApplySwitch(RunOptions& options, std::string_view text) {
    const std::size_t equals = text.find('=');
    const std::string_view key = text.substr(0, equals);
    for (const Switch& each : kSwitches) {
        if (each.key != key) continue;
        if (equals == std::string_view::npos) throw SwitchError(std::string(key) + " has no value");
        each.set(options, key, text.substr(equals + 1));
        if (key != "fail") options.switches.emplace_back(text);
        return;
    }
    std::string known;
    for (const Switch& each : kSwitches) known.append(known.empty() ? "" : ", ").append(each.key);
    throw SwitchError(std::string(key) + " is not a switch of the pipeline (" + known + ")");
}

PropertyValues::value_type ParseProperty(std::string_view text) {
    constexpr std::string_view kWanted = "is not NAME=TYPE:VALUE";
    const std::size_t equals = text.find('=');
    const std::size_t colon = text.find(':', equals == std::string_view::npos ? text.size() : equals);
    if (equals == 0 || colon == std::string_view::npos)
        throw SwitchError(std::string(text) + " " + std::string(kWanted));
    const std::string_view key = text.substr(0, equals);
    const std::string_view type = text.substr(equals + 1, colon - equals - 1);
    const std::string_view value = text.substr(colon + 1);
    const std::wstring name = platform::ToUtf16(key);
    if (type == "string") return {name, platform::ToUtf16(value)};
    if (type == "int") return {name, NumberOf<LONG>(key, value)};
    if (type == "uint") return {name, NumberOf<ULONG>(key, value)};
    if (type == "bool") return {name, ChoiceOf<bool>(key, value, {{"true", true}, {"false", false}})};
    Refuse(key, type, "is none of the types bool, int, uint, string");
}

}  // namespace devkit::pipeline
