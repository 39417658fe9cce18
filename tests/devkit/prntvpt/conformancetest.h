#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/prntvpt.h"
#include "providertest.h"

namespace devkit::prntvpt {

// Whose prntvpt.dll a test looks at.
enum class Which { Simulated, System };

// A printer without a driver, which Wine takes from its registry; gone when the process has ended at the
// latest.
class WinePrinter {
  public:
    explicit WinePrinter(const std::wstring& name);
    WinePrinter(const WinePrinter&) = delete;
    ~WinePrinter();

  private:
    const std::wstring m_key;
};

// What every prntvpt does, documented or seen on the platform: run on the simulated one, and on the system's
// own as far as there is a printer for it. Known gaps of a provider that has
// any are skipped with their reason.
class ConformanceTest : public testing::TestWithParam<Which> {
  protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] HRESULT Open(PCWSTR printer, DWORD version, HPTPROVIDER* pHandle) const;
    [[nodiscard]] HRESULT OpenEx(PCWSTR printer, DWORD max, DWORD preferred, HPTPROVIDER* pHandle,
                                 DWORD* pUsed) const;
    HRESULT Close(HPTPROVIDER handle) const;
    [[nodiscard]] HRESULT MergeStreams(HPTPROVIDER handle, IStream* pBase, IStream* pDelta,
                                       EPrintTicketScope scope, IStream* pResult, BSTR* pError) const;
    [[nodiscard]] HRESULT WriteCapabilities(IStream* pTicket, IStream* pCapabilities, BSTR* pError) const;
    // With the open handle. Null: without a delta.
    [[nodiscard]] WrittenResult Merge(std::string_view base, const char* pDelta,
                                      EPrintTicketScope scope = kPTJobScope) const;

    HMODULE m_module = nullptr;
    std::wstring m_printer;  // empty when the system has none
    HPTPROVIDER m_handle = nullptr;

  private:
    template <typename Function>
    [[nodiscard]] Function* Export(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(m_module, name)));
    }

    std::optional<WinePrinter> m_winePrinter;
};

// Tests that need a printer have it open.
class PrinterConformanceTest : public ConformanceTest {
  protected:
    void SetUp() override;
    // Whether the system's provider is one that does not do all that is documented. Asked of it once.
    [[nodiscard]] bool HasGaps() const;
};

[[nodiscard]] std::string WhichName(const testing::TestParamInfo<Which>& info);

}  // namespace devkit::prntvpt

// Runs the tests of a suite derived from ConformanceTest for both.
#define RUN_FOR_BOTH_PROVIDERS(suite) \
    INSTANTIATE_TEST_SUITE_P(Prntvpt, suite, testing::Values(Which::Simulated, Which::System), WhichName)
