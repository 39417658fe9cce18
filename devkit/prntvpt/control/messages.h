#pragma once

#include "platform/windows.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "devkit/common/record.h"
#include "devkit/printschema/summary.h"

namespace devkit::prntvpt {

// What passes through the interface of control.h as JSON, which says what the values mean. The functions of
// nlohmann's library that read refuse a missing key and a value of another type with
// nlohmann::json::exception.

struct ProviderSettings {
    std::filesystem::path device;
    std::vector<std::string> printers;  // empty: those of the device model
    std::vector<std::string> switches;  // "KEY=VALUE"
    bool recordTickets = true;
    bool recordCalls = true;
};
void to_json(nlohmann::json& json, const ProviderSettings& settings);
// Only the device is required; a key that is not known is refused with std::invalid_argument.
void from_json(const nlohmann::json& json, ProviderSettings& settings);

struct ProviderCall {
    std::uint64_t sequence = 0;
    std::string function;
    std::optional<std::uint64_t> handle;
    std::optional<std::string> scope;
    std::uint32_t thread = 0;
    bool impersonating = false;
    std::optional<bool> expectedToken;
    HRESULT result = S_OK;
    std::optional<std::string> base;
    std::optional<std::string> delta;
    std::optional<std::string> output;
    printschema::TicketFacts facts;
    std::optional<std::string> error;
    std::optional<std::string> twoPrefixes;
    // By the system's clock that never goes back (std::chrono::steady_clock).
    std::chrono::nanoseconds start{0};
    std::chrono::nanoseconds inStreams{0};  // spent in the caller's streams
    std::chrono::nanoseconds own{0};        // the rest, without the telling of the call
};
void to_json(nlohmann::json& json, const ProviderCall& call);
void from_json(const nlohmann::json& json, ProviderCall& call);
template <typename Visit>
void RecordFields(Visit& visit, common::MaybeConst<ProviderCall> auto& call) {
    visit(call.sequence, call.function, call.handle, call.scope, call.thread, call.impersonating,
          call.expectedToken, call.result, call.base, call.delta, call.output, call.facts, call.error,
          call.twoPrefixes, call.start, call.inStreams, call.own);
}

// A rule of the provider that its caller broke, with the stop that Application Verifier has for it.
struct ProviderBreach {
    std::string stop;
    std::string text;
};

struct OpenHandle {
    std::uint64_t handle = 0;
    std::string printer;
    std::uint32_t thread = 0;
};

struct ProviderConfiguration {
    std::string device;
    std::vector<std::string> printers;
    std::vector<std::string> switches;
    std::vector<std::string> faults;
};

struct ProviderReport {
    std::optional<ProviderConfiguration> configuration;
    std::vector<ProviderCall> calls;
    std::map<std::string, std::uint64_t> counts;
    std::vector<OpenHandle> openHandles;
    std::vector<ProviderBreach> breaches;
    std::vector<std::string> notes;
    std::vector<std::string> idleFaults;
};
void to_json(nlohmann::json& json, const ProviderReport& report);
void from_json(const nlohmann::json& json, ProviderReport& report);

// The text of a message. Texts in it come from whoever wrote the tickets: what is no UTF-8 becomes U+FFFD.
template <typename Message>
[[nodiscard]] std::string WriteMessage(const Message& message);
// nlohmann::json::exception for what is none.
template <typename Message>
[[nodiscard]] Message ReadMessage(std::string_view text);

extern template std::string WriteMessage(const ProviderSettings&);
extern template std::string WriteMessage(const ProviderCall&);
extern template std::string WriteMessage(const ProviderReport&);
extern template ProviderSettings ReadMessage(std::string_view);
extern template ProviderCall ReadMessage(std::string_view);
extern template ProviderReport ReadMessage(std::string_view);

}  // namespace devkit::prntvpt
