#include "devkit/filterhost/settings.h"

#include <array>

#include "devkit/common/json.h"
#include "platform/utf.h"

template <>
struct nlohmann::adl_serializer<std::filesystem::path> {
    static void to_json(json& value, const std::filesystem::path& path) {
        value = platform::ToUtf8(path.native());
    }
    static void from_json(const json& value, std::filesystem::path& path) {
        path = platform::ToUtf16(value.get<std::string>());
    }
};

template <>
struct nlohmann::adl_serializer<GUID> {
    static void to_json(json& value, const GUID& guid) {
        std::array<wchar_t, 40> text{};
        StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
        value = platform::ToUtf8(text.data());
    }
    static void from_json(const json& value, GUID& guid) {
        const std::wstring text = platform::ToUtf16(value.get<std::string>());
        if (FAILED(IIDFromString(text.c_str(), &guid))) throw std::invalid_argument("not a class id");
    }
};

namespace devkit::filterhost {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FilterSettings, name, dll, clsid, input, output)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(HostSettings, filters, pipelineConfig, device, printer, userTicket,
                                   deviceCapabilities, nsPrefix, teskType, driverProperties, providerSwitches,
                                   systemProvider, pipelineSwitches, properties, driverValues, queueValues,
                                   cancelAt, recordTickets, trace)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Job, input, inputName, output, outputName)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Order, host, job, probe, probeArgument)

std::string WriteOrder(const Order& order) { return common::JsonText(nlohmann::json(order)); }

Order ReadOrder(std::string_view line) { return common::ParseJson(line).get<Order>(); }

}  // namespace devkit::filterhost
