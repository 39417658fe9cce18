#include "devkit/prntvpt/api/configuration.h"

#include "platform/windows.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

#include "devkit/printschema/reader.h"
#include "devkit/prntvpt/device/variants.h"
#include "devkit/prntvpt/merge/serializer.h"
#include "devkit/prntvpt/merge/validation.h"
#include "platform/utf.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

constexpr std::string_view kFaultKey = "fault";

void ApplySwitch(const std::string& text, Switches& behaviour, std::vector<Fault>& faults) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw ConfigurationError("\"" + text + "\" is not KEY=VALUE");
    const std::string_view key = std::string_view(text).substr(0, equals);
    const std::string_view value = std::string_view(text).substr(equals + 1);
    if (key == kFaultKey) {
        faults.push_back(ParseFault(value));
    } else {
        SetSwitch(behaviour, key, value);
    }
}

// The default ticket is the only place where a model states its defaults, so it must be one that the provider
// would give out itself.
void CheckDefaultTicket(const Configuration& configuration) {
    Switches plain;
    plain.variants = configuration.behaviour.variants;
    const Device& device = configuration.device;
    const std::string where = platform::ToUtf8((configuration.folder / "default-ticket.xml").native()) + ": ";
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

[[nodiscard]] std::shared_ptr<const Configuration> Make(const ProviderSettings& settings) {
    auto configuration = std::make_shared<Configuration>();
    configuration->folder = settings.device;
    configuration->device = LoadDevice(configuration->folder);
    std::vector<Fault> faults;
    for (const std::string& variant : configuration->device.variants) {
        ApplySwitch(variant, configuration->behaviour, faults);
    }
    for (const std::string& text : settings.switches) ApplySwitch(text, configuration->behaviour, faults);
    if (!settings.printers.empty()) configuration->device.printers = settings.printers;
    configuration->recordTickets = settings.recordTickets;
    configuration->recordCalls = settings.recordCalls;
    configuration->pFaults = std::make_unique<FaultPlan>(std::move(faults));
    ApplyVariants(configuration->behaviour.variants, configuration->device);
    CheckDefaultTicket(*configuration);
    return configuration;
}

}  // namespace

bool Configuration::HasPrinter(std::wstring_view name) const {
    return std::any_of(device.printers.begin(), device.printers.end(), [&](const std::string& printer) {
        const std::wstring known = platform::ToUtf16(printer);
        return CompareStringOrdinal(known.data(), static_cast<int>(known.size()), name.data(),
                                    static_cast<int>(name.size()), TRUE) == CSTR_EQUAL;
    });
}

ProviderConfiguration Configuration::Describe() const {
    ProviderConfiguration description{
        platform::ToUtf8(folder.native()), device.printers, DescribeSwitches(behaviour), {}};
    for (const Fault& fault : pFaults->Faults()) description.faults.push_back(fault.text);
    return description;
}

std::shared_ptr<const Configuration> MakeConfiguration(const ProviderSettings& settings) {
    try {
        return Make(settings);
    } catch (const DeviceError& error) {
        throw ConfigurationError(error.what());
    } catch (const printschema::FormatError& error) {
        throw ConfigurationError(error.what());
    } catch (const std::invalid_argument& error) {
        throw ConfigurationError(error.what());
    }
}

std::shared_ptr<const Configuration> ParseConfiguration(std::string_view json) {
    try {
        return MakeConfiguration(ReadMessage<ProviderSettings>(json));
    } catch (const nlohmann::json::exception& error) {
        throw ConfigurationError(error.what());
    } catch (const std::invalid_argument& error) {
        throw ConfigurationError(error.what());
    }
}

std::string DefaultTicketOf(const Configuration& configuration) {
    const Device& device = configuration.device;
    return Serialize(device.defaultTicket, configuration.behaviour, {device.privateUris, {}});
}

}  // namespace devkit::prntvpt
