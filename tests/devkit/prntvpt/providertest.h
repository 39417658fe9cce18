#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/prntvpt/api/provider.h"
#include "devkit/prntvpt/control/messages.h"
#include "platform/prntvpt.h"
#include "programfolder.h"

namespace devkit::prntvpt {

inline constexpr HRESULT kNoConflict = static_cast<HRESULT>(S_PT_NO_CONFLICT);
inline constexpr HRESULT kConflictResolved = static_cast<HRESULT>(S_PT_CONFLICT_RESOLVED);
inline constexpr HRESULT kBadBase = static_cast<HRESULT>(E_PRINTTICKET_FORMAT);
inline constexpr HRESULT kBadDelta = static_cast<HRESULT>(E_DELTA_PRINTTICKET_FORMAT);
inline constexpr HRESULT kVersionNotSupported = static_cast<HRESULT>(0x80040001);
inline constexpr HRESULT kNoSuchPrinter = HRESULT_FROM_WIN32(ERROR_INVALID_PRINTER_NAME);

// The simulated provider as the host loads it.
[[nodiscard]] inline std::filesystem::path SimulatedDll() {
    return tests::ProgramFolder() / "simulated" / "prntvpt.dll";
}
[[nodiscard]] std::filesystem::path DeviceFolder(std::string_view name);
[[nodiscard]] std::string ReadFile(const std::filesystem::path& path);
// The JSON that configures a provider for a device of the kit.
[[nodiscard]] std::string ConfigurationFor(const std::vector<std::string>& switches,
                                           std::string_view device = "simprinter");

// What a call that writes a document gave back.
struct WrittenResult {
    HRESULT result = E_PENDING;
    std::string bytes;
    std::optional<std::wstring> error;  // none: the BSTR stayed null
};

// A provider of the test's own with a handle on the device's printer. Every test ends with a look at
// the breaches, of which there must be none that it did not ask for.
class ProviderTest : public testing::Test {
  protected:
    // Configures for the device with these switches and opens its printer.
    void Use(const std::vector<std::string>& switches, std::string_view device = "simprinter");
    void TearDown() override;
    // Closes the handle, when there is one.
    void Close();

    [[nodiscard]] WrittenResult Merge(std::string_view base, std::optional<std::string_view> delta,
                                      EPrintTicketScope scope = kPTJobScope);
    // The device's default ticket is the base.
    [[nodiscard]] WrittenResult MergeWithDefault(std::string_view delta,
                                                 EPrintTicketScope scope = kPTJobScope);
    // The line of the root entry of that local name, once these children of a ticket are merged with the
    // default ticket; the result has to be the one that is expected, without an error text.
    [[nodiscard]] std::string LineAfter(const std::string& children, const char* local, HRESULT expected,
                                        EPrintTicketScope scope = kPTJobScope);
    [[nodiscard]] WrittenResult Capabilities(std::optional<std::string_view> ticket = std::nullopt);
    [[nodiscard]] std::string DefaultTicket() const { return m_provider.DefaultTicket(); }
    [[nodiscard]] ProviderReport Report() const {
        return ReadMessage<ProviderReport>(WriteMessage(m_provider.Report()));
    }
    [[nodiscard]] std::vector<std::string> Stops() const;
    void ExpectBreaches() { m_expectsBreaches = true; }

    Provider m_provider;
    HPTPROVIDER m_handle = nullptr;

  private:
    bool m_expectsBreaches = false;
};

}  // namespace devkit::prntvpt
