#include "devkit/prntvpt/control/messages.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <stdexcept>
#include <type_traits>

#include "devkit/common/hresult.h"
#include "devkit/common/json.h"
#include "platform/utf.h"

namespace devkit::prntvpt {
namespace {

using Json = nlohmann::json;

[[nodiscard]] HRESULT ReadResult(const std::string& text) {
    std::uint32_t code = 0;
    const char* const pEnd = text.data() + text.size();
    if (!text.starts_with("0x") || std::from_chars(text.data() + 2, pEnd, code, 16).ptr != pEnd) {
        throw std::invalid_argument("not a result code: " + text);
    }
    return static_cast<HRESULT>(code);
}

[[nodiscard]] std::chrono::nanoseconds ReadTime(const Json& json) {
    return std::chrono::nanoseconds(json.get<std::chrono::nanoseconds::rep>());
}

template <typename Value>
void ReadIfPresent(const Json& json, const char* key, Value& value) {
    if (json.contains(key)) json.at(key).get_to(value);
}

// Calls visit with the key and the value of each field of a ProviderCall, const or not, but the result, which
// is written as people read it.
template <typename Call, typename Visit>
requires std::same_as<std::remove_const_t<Call>, ProviderCall>
void VisitFields(Call& call, Visit&& visit) {
    visit("sequence", call.sequence);
    visit("function", call.function);
    visit("handle", call.handle);
    visit("scope", call.scope);
    visit("thread", call.thread);
    visit("impersonating", call.impersonating);
    visit("expected_token", call.expectedToken);
    visit("base", call.base);
    visit("delta", call.delta);
    visit("output", call.output);
    visit("media_size", call.facts.mediaSize);
    visit("feed_direction", call.facts.feedDirection);
    visit("error", call.error);
    visit("two_prefixes", call.twoPrefixes);
}

template <typename Report, typename Visit>
requires std::same_as<std::remove_const_t<Report>, ProviderReport>
void VisitFields(Report& report, Visit&& visit) {
    visit("configuration", report.configuration);
    visit("calls", report.calls);
    visit("counts", report.counts);
    visit("open_handles", report.openHandles);
    visit("breaches", report.breaches);
    visit("notes", report.notes);
    visit("idle_faults", report.idleFaults);
}

}  // namespace

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ProviderBreach, stop, text)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(OpenHandle, handle, printer, thread)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ProviderConfiguration, device, printers, switches, faults)

void to_json(Json& json, const ProviderSettings& settings) {
    json = {{"device", platform::ToUtf8(settings.device.native())},
            {"switches", settings.switches},
            {"record_tickets", settings.recordTickets},
            {"record_calls", settings.recordCalls}};
    if (!settings.printers.empty()) json["printers"] = settings.printers;
}

void from_json(const Json& json, ProviderSettings& settings) {
    constexpr std::array<std::string_view, 5> kKnown{"device", "printers", "switches", "record_tickets",
                                                     "record_calls"};
    if (!json.is_object()) throw std::invalid_argument("the configuration is not an object");
    for (const auto& item : json.items()) {
        if (std::find(kKnown.begin(), kKnown.end(), item.key()) == kKnown.end()) {
            throw std::invalid_argument("unknown key \"" + item.key() + "\" in the configuration");
        }
    }
    settings.device = platform::ToUtf16(json.at("device").get<std::string>());
    ReadIfPresent(json, "printers", settings.printers);
    ReadIfPresent(json, "switches", settings.switches);
    ReadIfPresent(json, "record_tickets", settings.recordTickets);
    ReadIfPresent(json, "record_calls", settings.recordCalls);
}

void to_json(Json& json, const ProviderCall& call) {
    VisitFields(call, [&](const char* key, const auto& value) { json[key] = value; });
    json["result"] = common::HexOf(call.result);
    json["start"] = call.start.count();
    json["in_streams"] = call.inStreams.count();
    json["own"] = call.own.count();
}

void from_json(const Json& json, ProviderCall& call) {
    VisitFields(call, [&](const char* key, auto& value) { json.at(key).get_to(value); });
    call.result = ReadResult(json.at("result").get<std::string>());
    call.start = ReadTime(json.at("start"));
    call.inStreams = ReadTime(json.at("in_streams"));
    call.own = ReadTime(json.at("own"));
}

void to_json(Json& json, const ProviderReport& report) {
    VisitFields(report, [&](const char* key, const auto& value) { json[key] = value; });
}

void from_json(const Json& json, ProviderReport& report) {
    VisitFields(report, [&](const char* key, auto& value) { json.at(key).get_to(value); });
}

template <typename Message>
std::string WriteMessage(const Message& message) {
    return common::JsonText(Json(message));
}

template <typename Message>
Message ReadMessage(std::string_view text) {
    return common::ParseJson(text).get<Message>();
}

template std::string WriteMessage(const ProviderSettings&);
template std::string WriteMessage(const ProviderCall&);
template std::string WriteMessage(const ProviderReport&);
template ProviderSettings ReadMessage(std::string_view);
template ProviderCall ReadMessage(std::string_view);
template ProviderReport ReadMessage(std::string_view);

}  // namespace devkit::prntvpt
