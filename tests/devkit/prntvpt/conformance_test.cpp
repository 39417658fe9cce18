#include <winspool.h>

#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "beside.h"
#include "devkit/prntvpt/client/simulatedprovider.h"
#include "memorystream.h"
#include "platform/bstr.h"
#include "providertest.h"
#include "tickets.h"

// What every prntvpt does, documented or seen on the platform: run on the simulated one, and on the system's
// own as far as there is a printer for it. Known gaps of Wine's are skipped with their reason.

namespace devkit::prntvpt {
namespace {

using namespace tests;

enum class Which { Simulated, System };

[[nodiscard]] bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

[[nodiscard]] HMODULE LoadSystem() {
    wchar_t system[MAX_PATH] = L"";
    GetSystemDirectoryW(system, MAX_PATH);
    return LoadLibraryExW((std::filesystem::path(system) / L"prntvpt.dll").c_str(), nullptr,
                          LOAD_WITH_ALTERED_SEARCH_PATH);
}

[[nodiscard]] std::wstring FirstPrinter() {
    DWORD size = 0;
    DWORD count = 0;
    EnumPrintersW(PRINTER_ENUM_LOCAL, nullptr, 4, nullptr, 0, &size, &count);
    std::vector<BYTE> buffer(size);
    if (size == 0 || !EnumPrintersW(PRINTER_ENUM_LOCAL, nullptr, 4, buffer.data(), size, &size, &count) ||
        count == 0) {
        return {};
    }
    return reinterpret_cast<const PRINTER_INFO_4W*>(buffer.data())->pPrinterName;
}

// A printer without a driver, which Wine takes from its registry; gone when the process has ended at the
// latest.
class WinePrinter {
  public:
    explicit WinePrinter(const std::wstring& name) : m_key(kRoot + name) {
        HKEY key = nullptr;
        EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, m_key.c_str(), 0, nullptr,
                                                 REG_OPTION_VOLATILE, KEY_WRITE, nullptr, &key, nullptr));
        const std::pair<const wchar_t*, std::wstring> values[] = {{L"Name", name},
                                                                  {L"Port", L"FILE:"},
                                                                  {L"Printer Driver", L"None"},
                                                                  {L"Print Processor", L"WinPrint"},
                                                                  {L"Datatype", L"RAW"}};
        for (const auto& [value, text] : values) {
            const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
            RegSetValueExW(key, value, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), size);
        }
        RegCloseKey(key);
    }
    WinePrinter(const WinePrinter&) = delete;
    ~WinePrinter() { RegDeleteKeyW(HKEY_LOCAL_MACHINE, m_key.c_str()); }

  private:
    static constexpr const wchar_t* kRoot = L"System\\CurrentControlSet\\Control\\Print\\Printers\\";
    const std::wstring m_key;
};

class ConformanceTest : public testing::TestWithParam<Which> {
  protected:
    void SetUp() override {
        if (GetParam() == Which::Simulated) {
            SimulatedProvider provider(SimulatedDll());
            provider.Configure({.device = DeviceFolder("simprinter"), .printers = {}, .switches = {}});
            m_module = provider.Module();
            m_printer = L"SimPrinter";
        } else {
            m_module = LoadSystem();
            if (IsWine()) m_winePrinter.emplace(L"Prntvpt conformance");
            m_printer = FirstPrinter();
        }
        ASSERT_NE(m_module, nullptr);
    }
    void TearDown() override {
        if (m_handle != nullptr) Close(m_handle);
        m_winePrinter.reset();
        EXPECT_EQ(0, MemoryStream::Living());
    }

    template <typename Function>
    [[nodiscard]] Function* Export(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(m_module, name)));
    }
    [[nodiscard]] HRESULT Open(PCWSTR printer, DWORD version, HPTPROVIDER* pHandle) const {
        return Export<HRESULT WINAPI(PCWSTR, DWORD, HPTPROVIDER*)>("PTOpenProvider")(printer, version,
                                                                                     pHandle);
    }
    [[nodiscard]] HRESULT OpenEx(PCWSTR printer, DWORD max, DWORD preferred, HPTPROVIDER* pHandle,
                                 DWORD* pUsed) const {
        return Export<HRESULT WINAPI(PCWSTR, DWORD, DWORD, HPTPROVIDER*, DWORD*)>("PTOpenProviderEx")(
            printer, max, preferred, pHandle, pUsed);
    }
    HRESULT Close(HPTPROVIDER handle) const {
        return Export<HRESULT WINAPI(HPTPROVIDER)>("PTCloseProvider")(handle);
    }
    [[nodiscard]] HRESULT MergeStreams(HPTPROVIDER handle, IStream* pBase, IStream* pDelta,
                                       EPrintTicketScope scope, IStream* pResult, BSTR* pError) const {
        return Export<HRESULT WINAPI(HPTPROVIDER, IStream*, IStream*, EPrintTicketScope, IStream*, BSTR*)>(
            "PTMergeAndValidatePrintTicket")(handle, pBase, pDelta, scope, pResult, pError);
    }
    [[nodiscard]] WrittenResult Merge(std::string_view base, const char* pDelta,
                                      EPrintTicketScope scope = kPTJobScope) const {
        const auto baseStream = MemoryStream::Make(std::string(base));
        const auto deltaStream = MemoryStream::Make(pDelta == nullptr ? "" : pDelta);
        const auto output = MemoryStream::Make();
        platform::Bstr error;
        const HRESULT hr =
            MergeStreams(m_handle, baseStream.Get(), pDelta == nullptr ? nullptr : deltaStream.Get(), scope,
                         output.Get(), error.Put());
        WrittenResult written{hr, output->Bytes(), std::nullopt};
        if (error.Get() != nullptr) written.error = std::wstring(error.View());
        return written;
    }

    HMODULE m_module = nullptr;
    std::wstring m_printer;
    HPTPROVIDER m_handle = nullptr;

  private:
    std::optional<WinePrinter> m_winePrinter;
};

// Tests that need a printer have it open.
class PrinterConformanceTest : public ConformanceTest {
  protected:
    void SetUp() override {
        ConformanceTest::SetUp();
        if (m_printer.empty()) GTEST_SKIP() << "no printer is installed";
        ASSERT_EQ(S_OK, Open(m_printer.c_str(), 1, &m_handle));
    }
    [[nodiscard]] bool IsWinesOwn() const { return GetParam() == Which::System && IsWine(); }
};

TEST_P(ConformanceTest, UnknownPrinterIsAWin32Error) {
    HPTPROVIDER handle = nullptr;
    const HRESULT hr = Open(L"There is no such printer", 1, &handle);
    EXPECT_EQ(FACILITY_WIN32, HRESULT_FACILITY(hr));
    EXPECT_EQ(ERROR_INVALID_PRINTER_NAME, HRESULT_CODE(hr));
    EXPECT_EQ(nullptr, handle);
}

TEST_P(ConformanceTest, VersionZeroIsRefused) {
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(E_INVALIDARG, Open(L"There is no such printer", 0, &handle));
}

TEST_P(ConformanceTest, OpenExNeedsAVersionAndRoomForIt) {
    HPTPROVIDER handle = nullptr;
    DWORD used = 0;
    EXPECT_EQ(E_INVALIDARG, OpenEx(L"There is no such printer", 1, 1, &handle, nullptr));
    EXPECT_EQ(E_INVALIDARG, OpenEx(L"There is no such printer", 0, 1, &handle, &used));
}

TEST_P(ConformanceTest, HandleThatIsNoneIsRefused) {
    const auto base = MemoryStream::Make(Ticket(""));
    const auto output = MemoryStream::Make();
    EXPECT_EQ(E_INVALIDARG, MergeStreams(nullptr, base.Get(), nullptr, kPTJobScope, output.Get(), nullptr));
    EXPECT_EQ(E_HANDLE, Close(nullptr));
}

TEST_P(PrinterConformanceTest, VersionTwoIsNotSupported) {
    if (IsWinesOwn()) GTEST_SKIP() << "Wine answers E_INVALIDARG";
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(static_cast<HRESULT>(0x80040001), Open(m_printer.c_str(), 2, &handle));
}

TEST_P(PrinterConformanceTest, OpenExFallsBackToVersionOne) {
    HPTPROVIDER handle = nullptr;
    DWORD used = 0;
    ASSERT_EQ(S_OK, OpenEx(m_printer.c_str(), 5, 5, &handle, &used));
    EXPECT_EQ(1U, used);
    EXPECT_EQ(S_OK, Close(handle));
}

TEST_P(PrinterConformanceTest, HandleIsBoundToItsThread) {
    HRESULT merged = S_OK;
    std::thread([&] {
        const auto base = MemoryStream::Make(Ticket(""));
        const auto output = MemoryStream::Make();
        merged = MergeStreams(m_handle, base.Get(), nullptr, kPTJobScope, output.Get(), nullptr);
    }).join();
    EXPECT_EQ(E_INVALIDARG, merged);
}

TEST_P(PrinterConformanceTest, MergeSucceedsWithACodeThatIsNotSOk) {
    const WrittenResult merged = Merge(Ticket(""), nullptr);
    EXPECT_TRUE(merged.result == kNoConflict || merged.result == kConflictResolved);
    EXPECT_EQ(std::nullopt, merged.error);
}

TEST_P(PrinterConformanceTest, MergeLeavesTheResultAtItsEnd) {
    const auto base = MemoryStream::Make(Ticket(""));
    const auto output = MemoryStream::Make();
    ASSERT_TRUE(SUCCEEDED(MergeStreams(m_handle, base.Get(), nullptr, kPTJobScope, output.Get(), nullptr)));
    EXPECT_GT(output->Position(), 0U);
    EXPECT_EQ(output->Bytes().size(), output->Position());
}

TEST_P(PrinterConformanceTest, ResultHoldsNoWiderScope) {
    const WrittenResult job = Merge(Ticket(""), nullptr);
    for (const std::string& line : Summarize(Merge(job.bytes, nullptr, kPTPageScope).bytes)) {
        EXPECT_NE(line.find(":Page"), std::string::npos) << line;
    }
}

TEST_P(PrinterConformanceTest, MergeOfItsOwnResultHasNoConflict) {
    const WrittenResult job = Merge(Ticket(""), nullptr);
    const WrittenResult again = Merge(job.bytes, nullptr);
    EXPECT_EQ(kNoConflict, again.result);
    EXPECT_EQ(Summarize(job.bytes), Summarize(again.bytes));
}

TEST_P(PrinterConformanceTest, BadBaseAndBadDeltaAreToldApartWithAText) {
    if (IsWinesOwn()) GTEST_SKIP() << "Wine sets no text and does not tell the delta apart";
    const std::string bad = Ticket(R"(<psf:Option name="psk:X"/>)");
    const WrittenResult base = Merge(bad, nullptr);
    EXPECT_EQ(kBadBase, base.result);
    EXPECT_NE(base.error, std::nullopt);
    const WrittenResult delta = Merge(Ticket(""), bad.c_str());
    EXPECT_EQ(kBadDelta, delta.result);
    EXPECT_NE(delta.error, std::nullopt);
}

TEST_P(PrinterConformanceTest, ForeignNamespaceIsRemoved) {
    const std::string delta =
        Ticket(R"(<psf:Feature name="acme:PageStamp"><psf:Option name="acme:On"/></psf:Feature>)");
    EXPECT_EQ(std::string::npos, Merge(Ticket(""), delta.c_str()).bytes.find("PageStamp"));
}

INSTANTIATE_TEST_SUITE_P(Prntvpt, ConformanceTest, testing::Values(Which::Simulated, Which::System),
                         [](const auto& which) {
                             return which.param == Which::Simulated ? "Simulated" : "System";
                         });
INSTANTIATE_TEST_SUITE_P(Prntvpt, PrinterConformanceTest, testing::Values(Which::Simulated, Which::System),
                         [](const auto& which) {
                             return which.param == Which::Simulated ? "Simulated" : "System";
                         });

}  // namespace
}  // namespace devkit::prntvpt
