#include "conformancetest.h"

#include <winspool.h>

#include <filesystem>
#include <utility>
#include <vector>

#include "devkit/prntvpt/client/simulatedprovider.h"
#include "memorystream.h"
#include "platform/bstr.h"

namespace devkit::prntvpt {
namespace {

constexpr const wchar_t* kPrinters = L"System\\CurrentControlSet\\Control\\Print\\Printers\\";

// Whether a printer may be put into the registry, which on Windows is the spooler's alone. Decides no skip.
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

}  // namespace

WinePrinter::WinePrinter(const std::wstring& name) : m_key(kPrinters + name) {
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

WinePrinter::~WinePrinter() { RegDeleteKeyW(HKEY_LOCAL_MACHINE, m_key.c_str()); }

void ConformanceTest::SetUp() {
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
    ASSERT_NE(nullptr, m_module);
}

void ConformanceTest::TearDown() {
    if (m_handle != nullptr) Close(m_handle);
    m_winePrinter.reset();
}

HRESULT ConformanceTest::Open(PCWSTR printer, DWORD version, HPTPROVIDER* pHandle) const {
    return Export<HRESULT WINAPI(PCWSTR, DWORD, HPTPROVIDER*)>("PTOpenProvider")(printer, version, pHandle);
}

HRESULT ConformanceTest::OpenEx(PCWSTR printer, DWORD max, DWORD preferred, HPTPROVIDER* pHandle,
                                DWORD* pUsed) const {
    return Export<HRESULT WINAPI(PCWSTR, DWORD, DWORD, HPTPROVIDER*, DWORD*)>("PTOpenProviderEx")(
        printer, max, preferred, pHandle, pUsed);
}

HRESULT ConformanceTest::Close(HPTPROVIDER handle) const {
    return Export<HRESULT WINAPI(HPTPROVIDER)>("PTCloseProvider")(handle);
}

HRESULT ConformanceTest::MergeStreams(HPTPROVIDER handle, IStream* pBase, IStream* pDelta,
                                      EPrintTicketScope scope, IStream* pResult, BSTR* pError) const {
    return Export<HRESULT WINAPI(HPTPROVIDER, IStream*, IStream*, EPrintTicketScope, IStream*, BSTR*)>(
        "PTMergeAndValidatePrintTicket")(handle, pBase, pDelta, scope, pResult, pError);
}

WrittenResult ConformanceTest::Merge(std::string_view base, const char* pDelta,
                                     EPrintTicketScope scope) const {
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

HRESULT ConformanceTest::WriteCapabilities(IStream* pTicket, IStream* pCapabilities, BSTR* pError) const {
    return Export<HRESULT WINAPI(HPTPROVIDER, IStream*, IStream*, BSTR*)>("PTGetPrintCapabilities")(
        m_handle, pTicket, pCapabilities, pError);
}

void PrinterConformanceTest::SetUp() {
    ConformanceTest::SetUp();
    if (m_printer.empty()) GTEST_SKIP() << "no printer is installed";
    ASSERT_EQ(S_OK, Open(m_printer.c_str(), 1, &m_handle));
}

bool PrinterConformanceTest::HasGaps() const {
    if (GetParam() == Which::Simulated) return false;
    static const bool hasGaps = [this] {
        HPTPROVIDER handle = nullptr;
        if (Open(m_printer.c_str(), 2, &handle) != kVersionNotSupported) return true;
        return Merge("<no-ticket/>", nullptr).error == std::nullopt;
    }();
    return hasGaps;
}

std::string WhichName(const testing::TestParamInfo<Which>& info) {
    return info.param == Which::Simulated ? "Simulated" : "System";
}

}  // namespace devkit::prntvpt
