#include "devkit/filterhost/ticketprovider.h"

#include "platform/windows.h"

#include <winspool.h>

#include <filesystem>

#include <nlohmann/json.hpp>

#include "devkit/filterhost/device.h"
#include "devkit/filterhost/programfolder.h"
#include "devkit/filterhost/usageerror.h"
#include "devkit/prntvpt/api/provider.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;

// The first printer of the configuration that a report shows.
std::string FirstPrinter(const std::string& report) {
    const Json json = Json::parse(report, nullptr, false);
    const Json::json_pointer path("/configuration/printers/0");
    return json.is_object() && json.contains(path) ? json.at(path).get<std::string>() : std::string();
}

std::string DefaultPrinter() {
    std::wstring name(1024, L'\0');
    DWORD size = static_cast<DWORD>(name.size());
    if (!GetDefaultPrinterW(name.data(), &size) || size == 0) {
        throw UsageError("--printer is required: the system has no default printer");
    }
    name.resize(size - 1);
    return platform::ToUtf8(name);
}

// The model's default ticket, read without a provider that the filter could be bound to.
std::string DefaultTicketOf(const std::filesystem::path& device) {
    prntvpt::Provider model;
    std::string error;
    const Json configuration{{"device", platform::ToUtf8(device.wstring())}};
    if (FAILED(model.Configure(configuration.dump().c_str(), error))) throw UsageError("--device: " + error);
    return model.DefaultTicket();
}

}  // namespace

TicketProvider::TicketProvider(const RunSettings& settings) {
    const std::filesystem::path device = FindDevice(settings.device);
    if (settings.systemProvider) {
        m_printer = settings.printer ? *settings.printer : DefaultPrinter();
        m_defaultTicket = DefaultTicketOf(device);
        return;
    }
    m_settings.device = device;
    m_settings.switches = settings.providerSwitches;
    if (settings.printer) m_settings.printers = {*settings.printer};
    try {
        m_simulated.emplace(ProgramFolder() / "simulated" / "prntvpt.dll");
        Configure(false);
    } catch (const std::runtime_error& error) {
        throw UsageError(error.what());
    }
    m_printer = settings.printer ? *settings.printer : FirstPrinter(m_simulated->Report().json);
    m_defaultTicket = m_simulated->DefaultTicket();
}

void TicketProvider::Configure(bool recordTickets) {
    m_settings.recordTickets = recordTickets;
    m_simulated->Configure(m_settings);
}

void TicketProvider::BeginRun(HANDLE userToken, std::size_t pages) {
    if (!m_simulated) return;
    Configure(pages <= MaxRecordedPages);
    m_simulated->ExpectToken(userToken);
}

std::optional<prntvpt::ProviderReport> TicketProvider::EndRun() {
    if (!m_simulated) return std::nullopt;
    m_simulated->Finish();
    return m_simulated->Report();
}

}  // namespace devkit::filterhost
