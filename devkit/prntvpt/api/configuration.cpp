#include "devkit/prntvpt/api/configuration.h"

#include "platform/windows.h"

#include <algorithm>
#include <array>
#include <utility>

#include <nlohmann/json.hpp>

#include "devkit/printschema/formaterror.h"
#include "devkit/printschema/text.h"
#include "devkit/prntvpt/merge/validation.h"
#include "devkit/prntvpt/merge/variants.h"

namespace devkit::prntvpt {
namespace {

using Json = nlohmann::json;

constexpr std::string_view FaultKey = "fault";

void RequireKnownKeys(const Json& json) {
    constexpr std::array<std::string_view, 4> Known{"device", "printers", "switches", "record_tickets"};
    if (!json.is_object()) throw ConfigurationError("the configuration is not an object");
    for (const auto& item : json.items()) {
        if (std::find(Known.begin(), Known.end(), item.key()) == Known.end()) {
            throw ConfigurationError("unknown key \"" + item.key() + "\" in the configuration");
        }
    }
}

void ApplySwitch(const std::string& text, Switches& switches, std::vector<Fault>& faults) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw ConfigurationError("\"" + text + "\" is not KEY=VALUE");
    const std::string_view key = std::string_view(text).substr(0, equals);
    const std::string_view value = std::string_view(text).substr(equals + 1);
    if (key == FaultKey) {
        faults.push_back(ParseFault(value));
    } else {
        SetSwitch(switches, key, value);
    }
}

// The default ticket is the only place where a model states its defaults, so it must be one that the provider
// would give out itself.
void CheckDefaultTicket(const Configuration& configuration) {
    Switches plain;
    plain.variants = configuration.switches.variants;
    const Device& device = configuration.device;
    const std::string where = ToUtf8((configuration.folder / "default-ticket.xml").native()) + ": ";
    const ValidatedTicket validated =
        MergeAndValidate(device, plain, device.defaultTicket, nullptr, kPTJobScope);
    for (const Element& entry : validated.ticket.children) {
        const Element* const pStated = device.defaultTicket.Find(entry.tag, *entry.name);
        if (pStated == nullptr || *pStated != entry) {
            throw ConfigurationError(where + entry.name->local + " is not what the device would select");
        }
    }
    if (validated.conflict || validated.ticket != device.defaultTicket) {
        throw ConfigurationError(where + "not a valid ticket of the device in the device's order");
    }
}

[[nodiscard]] std::shared_ptr<const Configuration> Parse(const Json& json) {
    RequireKnownKeys(json);
    auto configuration = std::make_shared<Configuration>();
    configuration->folder = ToWide(json.at("device").get<std::string>());
    configuration->device = LoadDevice(configuration->folder);
    std::vector<Fault> faults;
    for (const std::string& variant : configuration->device.variants) {
        ApplySwitch(variant, configuration->switches, faults);
    }
    if (json.contains("switches")) {
        for (const Json& text : json.at("switches")) {
            ApplySwitch(text.get<std::string>(), configuration->switches, faults);
        }
    }
    if (json.contains("printers")) {
        configuration->device.printers = json.at("printers").get<std::vector<std::string>>();
    }
    if (json.contains("record_tickets")) {
        configuration->recordTickets = json.at("record_tickets").get<bool>();
    }
    configuration->pFaults = std::make_unique<FaultPlan>(std::move(faults));
    ApplyVariants(configuration->switches.variants, configuration->device);
    CheckDefaultTicket(*configuration);
    return configuration;
}

}  // namespace

bool Configuration::HasPrinter(std::wstring_view name) const {
    return std::any_of(device.printers.begin(), device.printers.end(), [&](const std::string& printer) {
        const std::wstring known = ToWide(printer);
        return CompareStringOrdinal(known.data(), static_cast<int>(known.size()), name.data(),
                                    static_cast<int>(name.size()), TRUE) == CSTR_EQUAL;
    });
}

std::shared_ptr<const Configuration> ParseConfiguration(std::string_view json) {
    try {
        return Parse(Json::parse(json));
    } catch (const Json::exception& error) {
        throw ConfigurationError(error.what());
    } catch (const DeviceError& error) {
        throw ConfigurationError(error.what());
    } catch (const FormatError& error) {
        throw ConfigurationError(error.what());
    } catch (const std::invalid_argument& error) {
        throw ConfigurationError(error.what());
    }
}

}  // namespace devkit::prntvpt
