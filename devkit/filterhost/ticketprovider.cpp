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

// The model's default ticket, read without a provider that the filter could be bound to.
std::string DefaultTicketOf(const std::filesystem::path& device) {
    try {
        prntvpt::ProviderSettings settings;
        settings.device = device;
        return prntvpt::DefaultTicketOf(*prntvpt::MakeConfiguration(settings));
    } catch (const prntvpt::ConfigurationError& error) {
        throw UsageError(std::string("--device: ") + error.what());
    }
}

}  // namespace

PrinterHandle::PrinterHandle(const std::wstring& name) {
    std::wstring writable = name;
    HANDLE handle = nullptr;
    if (OpenPrinterW(writable.data(), &handle, nullptr)) m_handle.reset(handle);
}

void PrinterHandle::Close::operator()(HANDLE handle) const noexcept { ClosePrinter(handle); }

TicketProvider::TicketProvider(const RunSettings& settings) {
    const std::filesystem::path device = FindDeviceFolder(settings.device);
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
    m_printer = settings.printer ? *settings.printer : m_simulated->Report().configuration->printers.front();
    m_defaultTicket = m_simulated->DefaultTicket();
}

void TicketProvider::Configure(bool recordTickets) {
    m_settings.recordTickets = recordTickets;
    m_simulated->Configure(m_settings);
}

void TicketProvider::BeginRun(HANDLE userToken, std::size_t pages,
                              prntvpt::SimulatedProvider::Listener listener) {
    if (!m_simulated) return;
    Configure(pages <= kMaxRecordedPages);
    m_simulated->ExpectToken(userToken);
    m_simulated->Listen(std::move(listener));
}

std::optional<prntvpt::ProviderReport> TicketProvider::EndRun(bool hung) {
    if (!m_simulated) return std::nullopt;
    m_simulated->Listen({});
    if (hung) return std::nullopt;
    m_simulated->Finish();
    return m_simulated->Report();
}

}  // namespace devkit::filterhost
