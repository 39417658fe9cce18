#include "devkit/prntvpt/api/report.h"

#include <cstdint>
#include <cstdio>
#include <optional>

#include <nlohmann/json.hpp>

#include "devkit/printschema/names.h"
#include "devkit/printschema/text.h"

namespace devkit::prntvpt {
namespace {

using Json = nlohmann::json;

[[nodiscard]] std::string ResultText(HRESULT result) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08X", static_cast<unsigned>(result));
    return text;
}

template <typename Value>
[[nodiscard]] Json OrNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

[[nodiscard]] Json DescribeCall(const LoggedCall& call) {
    return {{"function", call.function},
            {"handle", OrNull(call.handle)},
            {"scope", call.scope ? Json(ScopeName(*call.scope)) : Json(nullptr)},
            {"thread", call.thread},
            {"impersonating", call.impersonating},
            {"expected_token", OrNull(call.expectedToken)},
            {"result", ResultText(call.result)},
            {"base", OrNull(call.base)},
            {"delta", OrNull(call.delta)},
            {"output", OrNull(call.output)},
            {"error", OrNull(call.error)}};
}

[[nodiscard]] Json DescribeConfiguration(const Configuration* pConfiguration) {
    if (pConfiguration == nullptr) return nullptr;
    Json faults = Json::array();
    for (const Fault& fault : pConfiguration->pFaults->Faults()) faults.push_back(fault.text);
    return {{"device", ToUtf8(pConfiguration->folder.native())},
            {"printers", pConfiguration->device.printers},
            {"switches", DescribeSwitches(pConfiguration->switches)},
            {"faults", faults}};
}

}  // namespace

std::string WriteReport(const Configuration* pConfiguration, const CallLog& log,
                        const HandleRegistry& handles) {
    Json calls = Json::array();
    for (const LoggedCall& call : log.Calls()) calls.push_back(DescribeCall(call));
    Json open = Json::array();
    for (const HandleEntry& entry : handles.OpenHandles()) {
        open.push_back({{"handle", entry.handle}, {"printer", entry.printer}, {"thread", entry.thread}});
    }
    Json breaches = Json::array();
    for (const Breach& breach : handles.Breaches()) {
        breaches.push_back({{"stop", breach.stop}, {"text", breach.text}});
    }
    const Json report{{"configuration", DescribeConfiguration(pConfiguration)},
                      {"calls", calls},
                      {"counts", log.Counts()},
                      {"open_handles", open},
                      {"breaches", breaches},
                      {"notes", log.Notes()}};
    // Texts come from whoever wrote the tickets.
    return report.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace devkit::prntvpt
