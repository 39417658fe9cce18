#include "devkit/prntvpt/control/messages.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

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

template <typename Value>
void ReadIfPresent(const Json& json, const char* key, Value& value) {
    if (json.contains(key)) json.at(key).get_to(value);
}

}  // namespace

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ProviderBreach, stop, text)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(OpenHandle, handle, printer, thread)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ProviderConfiguration, device, printers, switches, faults)

void to_json(Json& json, const ProviderSettings& settings) {
    json = {{"device", platform::ToUtf8(settings.device.native())},
            {"switches", settings.switches},
            {"record_tickets", settings.recordTickets}};
    if (!settings.printers.empty()) json["printers"] = settings.printers;
}

void from_json(const Json& json, ProviderSettings& settings) {
    constexpr std::array<std::string_view, 4> kKnown{"device", "printers", "switches", "record_tickets"};
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
}

void to_json(Json& json, const ProviderCall& call) {
    json = {{"sequence", call.sequence},
            {"function", call.function},
            {"handle", call.handle},
            {"scope", call.scope},
            {"thread", call.thread},
            {"impersonating", call.impersonating},
            {"expected_token", call.expectedToken},
            {"result", common::HexOf(call.result)},
            {"base", call.base},
            {"delta", call.delta},
            {"output", call.output},
            {"media_size", call.facts.mediaSize},
            {"feed_direction", call.facts.feedDirection},
            {"error", call.error}};
}

void from_json(const Json& json, ProviderCall& call) {
    json.at("sequence").get_to(call.sequence);
    json.at("function").get_to(call.function);
    json.at("handle").get_to(call.handle);
    json.at("scope").get_to(call.scope);
    json.at("thread").get_to(call.thread);
    json.at("impersonating").get_to(call.impersonating);
    json.at("expected_token").get_to(call.expectedToken);
    call.result = ReadResult(json.at("result").get<std::string>());
    json.at("base").get_to(call.base);
    json.at("delta").get_to(call.delta);
    json.at("output").get_to(call.output);
    json.at("media_size").get_to(call.facts.mediaSize);
    json.at("feed_direction").get_to(call.facts.feedDirection);
    json.at("error").get_to(call.error);
}

void to_json(Json& json, const ProviderReport& report) {
    json = {{"configuration", report.configuration}, {"calls", report.calls},       {"counts", report.counts},
            {"open_handles", report.openHandles},    {"breaches", report.breaches}, {"notes", report.notes},
            {"idle_faults", report.idleFaults}};
}

void from_json(const Json& json, ProviderReport& report) {
    json.at("configuration").get_to(report.configuration);
    json.at("calls").get_to(report.calls);
    json.at("counts").get_to(report.counts);
    json.at("open_handles").get_to(report.openHandles);
    json.at("breaches").get_to(report.breaches);
    json.at("notes").get_to(report.notes);
    json.at("idle_faults").get_to(report.idleFaults);
}

template <typename Message>
std::string WriteMessage(const Message& message) {
    return Json(message).dump(-1, ' ', false, Json::error_handler_t::replace);
}

template <typename Message>
Message ReadMessage(std::string_view text) {
    return Json::parse(text).get<Message>();
}

template std::string WriteMessage(const ProviderSettings&);
template std::string WriteMessage(const ProviderCall&);
template std::string WriteMessage(const ProviderReport&);
template ProviderSettings ReadMessage(std::string_view);
template ProviderCall ReadMessage(std::string_view);
template ProviderReport ReadMessage(std::string_view);

}  // namespace devkit::prntvpt
