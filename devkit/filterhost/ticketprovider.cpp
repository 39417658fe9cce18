#include "devkit/filterhost/ticketprovider.h"

#include "platform/windows.h"

#include <winspool.h>

#include <filesystem>
#include <utility>

#include "devkit/filterhost/devicefolder.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "devkit/prntvpt/api/configuration.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

std::string DefaultPrinter() {
    std::wstring name(1024, L'\0');
    DWORD size = static_cast<DWORD>(name.size());
    if (!GetDefaultPrinterW(name.data(), &size) || size == 0) {
        throw UsageError("--printer is required: the system has no default printer");
    }
    name.resize(size - 1);
    return platform::ToUtf8(name);
}

// The model with its switches, read without a provider that the filter could be bound to.
std::shared_ptr<const prntvpt::Configuration> ReadModel(const prntvpt::ProviderSettings& settings) {
    try {
        return prntvpt::MakeConfiguration(settings);
    } catch (const prntvpt::ConfigurationError& error) {
        throw UsageError(error.what());
    }
}

prntvpt::ProviderSettings SettingsOf(const HostSettings& settings) {
    prntvpt::ProviderSettings provider;
    provider.device = FindDeviceFolder(settings.device);
    if (settings.systemProvider) return provider;
    provider.switches = settings.providerSwitches;
    if (settings.printer) provider.printers = {*settings.printer};
    return provider;
}

}  // namespace

PrinterHandle::PrinterHandle(const std::wstring& name) {
    std::wstring writable = name;
    HANDLE handle = nullptr;
    if (OpenPrinterW(writable.data(), &handle, nullptr)) m_handle.reset(handle);
}

void PrinterHandle::Close::operator()(HANDLE handle) const noexcept { ClosePrinter(handle); }

TicketProvider::TicketProvider(const HostSettings& settings) : m_settings(SettingsOf(settings)) {
    if (settings.systemProvider) {
        m_printer = settings.printer ? *settings.printer : DefaultPrinter();
        m_defaultTicket = prntvpt::DefaultTicketOf(*ReadModel(m_settings));
        return;
    }
    try {
        m_simulated.emplace(ProgramFolder() / "simulated" / "prntvpt.dll");
        Configure(false);
    } catch (const std::runtime_error& error) {
        throw UsageError(error.what());
    }
    m_printer = m_simulated->Report().configuration->printers.front();
    m_defaultTicket = m_simulated->DefaultTicket();
}

void CheckProvider(const HostSettings& settings) {
    static_cast<void>(ReadModel(SettingsOf(settings)));
    if (settings.systemProvider && !settings.printer) static_cast<void>(DefaultPrinter());
}

void TicketProvider::Configure(bool recordTickets) {
    m_settings.recordTickets = recordTickets;
    // Each is told when it ends.
    m_settings.recordCalls = false;
    m_simulated->Configure(m_settings);
}

void TicketProvider::BeginRun(HANDLE userToken, bool recordsTickets,
                              prntvpt::SimulatedProvider::Listener listener) {
    if (!m_simulated) return;
    // The device model was read when this was made.
    if (recordsTickets == m_settings.recordTickets) {
        m_simulated->Reset();
    } else {
        Configure(recordsTickets);
    }
    m_simulated->ExpectToken(userToken);
    m_simulated->Listen(std::move(listener));
}

std::optional<prntvpt::ProviderReport> TicketProvider::EndRun(bool abandoned) {
    if (!m_simulated) return std::nullopt;
    m_simulated->Listen({});
    if (abandoned) return std::nullopt;
    m_simulated->Finish();
    return m_simulated->Report();
}

}  // namespace devkit::filterhost
