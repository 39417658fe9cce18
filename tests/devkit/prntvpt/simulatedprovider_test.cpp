#include "devkit/prntvpt/client/simulatedprovider.h"

#include <cstdint>
#include <fstream>
#include <system_error>
#include <thread>

#include "memorystream.h"
#include "platform/bstr.h"
#include "providertest.h"
#include "thrown.h"
#include "tickets.h"

// The built DLL, through its exports.

namespace devkit::prntvpt {
namespace {

using namespace tests;

using OpenFunction = HRESULT WINAPI(PCWSTR, DWORD, HPTPROVIDER*);
using CloseFunction = HRESULT WINAPI(HPTPROVIDER);
using MergeFunction = HRESULT WINAPI(HPTPROVIDER, IStream*, IStream*, EPrintTicketScope, IStream*, BSTR*);
using CapabilitiesFunction = HRESULT WINAPI(HPTPROVIDER, IStream*, IStream*, BSTR*);

class SimulatedProviderTest : public testing::Test {
  protected:
    void SetUp() override {
        m_provider.Configure({.device = DeviceFolder("simprinter"), .printers = {}, .switches = {}});
    }
    // The DLL stays loaded, so what a test leaves open on purpose is open in the next one, too.
    void TearDown() override { EXPECT_EQ(s_abandoned, m_provider.Report().openHandles.size()); }

    template <typename Function>
    [[nodiscard]] Function* Export(const char* name) const {
        return reinterpret_cast<Function*>(
            reinterpret_cast<void*>(GetProcAddress(m_provider.Module(), name)));
    }
    [[nodiscard]] HPTPROVIDER Open() const {
        HPTPROVIDER handle = nullptr;
        EXPECT_EQ(S_OK, Export<OpenFunction>("PTOpenProvider")(L"SimPrinter", 1, &handle));
        return handle;
    }
    void Close(HPTPROVIDER handle) const {
        EXPECT_EQ(S_OK, Export<CloseFunction>("PTCloseProvider")(handle));
    }

    SimulatedProvider m_provider{SimulatedDll()};
    static inline std::size_t s_abandoned = 0;
};

TEST_F(SimulatedProviderTest, ExportsEveryNameOfThePlatformUndecorated) {
    for (const char* const name : {"BindPTProviderThunk",
                                   "ConvertDevModeToPrintTicketThunk",
                                   "ConvertDevModeToPrintTicketThunk2",
                                   "ConvertPrintTicketToDevModeThunk",
                                   "ConvertPrintTicketToDevModeThunk2",
                                   "DllCanUnloadNow",
                                   "DllGetClassObject",
                                   "DllRegisterServer",
                                   "DllUnregisterServer",
                                   "GetDeviceDefaultPrintTicketThunk",
                                   "GetDeviceNamespacesThunk",
                                   "GetPrintCapabilitiesThunk",
                                   "GetPrintCapabilitiesThunk2",
                                   "GetPrintDeviceCapabilitiesThunk",
                                   "GetPrintDeviceCapabilitiesThunk2",
                                   "GetPrintDeviceResourcesThunk",
                                   "GetPrintDeviceResourcesThunk2",
                                   "GetSchemaVersionThunk",
                                   "MergeAndValidatePrintTicketThunk",
                                   "MergeAndValidatePrintTicketThunk2",
                                   "PTCloseProvider",
                                   "PTConvertDevModeToPrintTicket",
                                   "PTConvertPrintTicketToDevMode",
                                   "PTGetPrintCapabilities",
                                   "PTGetPrintDeviceCapabilities",
                                   "PTGetPrintDeviceResources",
                                   "PTMergeAndValidatePrintTicket",
                                   "PTOpenProvider",
                                   "PTOpenProviderEx",
                                   "PTQuerySchemaVersionSupport",
                                   "PTReleaseMemory",
                                   "UnbindPTProviderThunk"}) {
        EXPECT_NE(nullptr, GetProcAddress(m_provider.Module(), name)) << name;
    }
}

TEST_F(SimulatedProviderTest, ExportsTheFirstTenWithTheirOrdinals) {
    WORD ordinal = 0;
    for (const char* const name :
         {"PTQuerySchemaVersionSupport", "PTOpenProvider", "PTOpenProviderEx", "PTCloseProvider",
          "BindPTProviderThunk", "PTGetPrintCapabilities", "PTMergeAndValidatePrintTicket",
          "PTConvertPrintTicketToDevMode", "PTConvertDevModeToPrintTicket", "PTReleaseMemory"}) {
        EXPECT_EQ(GetProcAddress(m_provider.Module(), name),
                  GetProcAddress(m_provider.Module(), MAKEINTRESOURCEA(++ordinal)))
            << name;
    }
}

TEST_F(SimulatedProviderTest, ExportsNothingElse) {
    const auto* const pBase = reinterpret_cast<const BYTE*>(m_provider.Module());
    const auto* const pDos = reinterpret_cast<const IMAGE_DOS_HEADER*>(pBase);
    const auto* const pHeaders = reinterpret_cast<const IMAGE_NT_HEADERS*>(pBase + pDos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory =
        pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const auto* const pExports =
        reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(pBase + directory.VirtualAddress);
    EXPECT_EQ(32U + 7U, pExports->NumberOfNames);
    EXPECT_EQ(32U + 7U, pExports->NumberOfFunctions);
}

TEST_F(SimulatedProviderTest, MergesAndReportsIt) {
    const HPTPROVIDER handle = Open();
    const std::string ticket = m_provider.DefaultTicket();
    const auto base = MemoryStream::Make(ticket);
    const auto result = MemoryStream::Make();
    platform::Bstr error;
    EXPECT_EQ(kNoConflict, Export<MergeFunction>("PTMergeAndValidatePrintTicket")(
                               handle, base.Get(), nullptr, kPTJobScope, result.Get(), error.Put()));
    EXPECT_EQ(ticket, result->Bytes());
    const auto output = MemoryStream::Make();
    EXPECT_EQ(S_OK, Export<CapabilitiesFunction>("PTGetPrintCapabilities")(handle, nullptr, output.Get(),
                                                                           error.Put()));
    Close(handle);
    const ProviderReport report = m_provider.Report();
    ASSERT_EQ(4U, report.calls.size());
    EXPECT_EQ(ticket, report.calls[1].output);
    EXPECT_EQ(output->Bytes(), report.calls[2].output);
    EXPECT_TRUE(report.breaches.empty());
}

TEST_F(SimulatedProviderTest, AnswersForVersionsAndMemoryAsThePlatformDoes) {
    DWORD version = 0;
    EXPECT_EQ(S_OK,
              Export<HRESULT WINAPI(PCWSTR, DWORD*)>("PTQuerySchemaVersionSupport")(L"SimPrinter", &version));
    EXPECT_EQ(1u, version);
    const auto openEx =
        Export<HRESULT WINAPI(PCWSTR, DWORD, DWORD, HPTPROVIDER*, DWORD*)>("PTOpenProviderEx");
    HPTPROVIDER handle = nullptr;
    // The most that the caller knows decides, not what it likes best.
    EXPECT_EQ(E_INVALIDARG, openEx(L"SimPrinter", 0, 1, &handle, &version));
    EXPECT_EQ(0u, version);
    EXPECT_EQ(S_OK, openEx(L"SimPrinter", 1, 0, &handle, &version));
    EXPECT_EQ(1u, version);
    Close(handle);
    const auto release = Export<HRESULT WINAPI(PVOID)>("PTReleaseMemory");
    EXPECT_EQ(S_OK, release(nullptr));
    EXPECT_EQ(E_INVALIDARG, release(&version));
    std::vector<std::string> called;
    for (const auto& call : m_provider.Report().calls) called.push_back(call.function);
    EXPECT_EQ((std::vector<std::string>{"PTQuerySchemaVersionSupport", "PTOpenProviderEx", "PTOpenProviderEx",
                                        "PTCloseProvider", "PTReleaseMemory", "PTReleaseMemory"}),
              called);
}

TEST_F(SimulatedProviderTest, ErrorTextsAreBstrsOfTheCaller) {
    const HPTPROVIDER handle = Open();
    const auto base = MemoryStream::Make("<a>");
    const auto result = MemoryStream::Make();
    platform::Bstr error;
    EXPECT_EQ(kBadBase, Export<MergeFunction>("PTMergeAndValidatePrintTicket")(
                            handle, base.Get(), nullptr, kPTJobScope, result.Get(), error.Put()));
    EXPECT_EQ(L"Base ticket: is not well-formed XML (line 1: The markup breaks off)", error.View());
    Close(handle);
}

TEST_F(SimulatedProviderTest, FunctionsThatItLacksSaySo) {
    using ConvertFunction = HRESULT WINAPI(HPTPROVIDER, IStream*, EDefaultDevmodeType, EPrintTicketScope,
                                           ULONG*, PDEVMODE*, BSTR*);
    ULONG size = 5;
    auto* pDevmode = reinterpret_cast<PDEVMODE>(&size);
    EXPECT_EQ(E_NOTIMPL, Export<ConvertFunction>("PTConvertPrintTicketToDevMode")(
                             nullptr, nullptr, kUserDefaultDevmode, kPTJobScope, &size, &pDevmode, nullptr));
    EXPECT_EQ(0U, size);
    EXPECT_EQ(nullptr, pDevmode);
    using ThunkFunction = HRESULT WINAPI(void*, void*, void*, void*, void*, void*, void*, void*, void*);
    EXPECT_EQ(E_NOTIMPL,
              Export<ThunkFunction>("MergeAndValidatePrintTicketThunk2")(
                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(1U, m_provider.Report().counts.at("MergeAndValidatePrintTicketThunk2"));
    using UnloadFunction = HRESULT WINAPI();
    EXPECT_EQ(S_FALSE, Export<UnloadFunction>("DllCanUnloadNow")());
}

TEST_F(SimulatedProviderTest, ThreadThatEndsWithAnOpenHandleLeaksIt) {
    HPTPROVIDER handle = nullptr;
    std::thread([&] { handle = Open(); }).join();
    const ProviderReport report = m_provider.Report();
    ASSERT_EQ(1U, report.breaches.size());
    EXPECT_EQ("A012", report.breaches[0].stop);
    EXPECT_EQ(" of the printer SimPrinter was never closed",
              report.breaches[0].text.substr(report.breaches[0].text.find(" of the printer")));
    m_provider.Configure({.device = DeviceFolder("simprinter"), .printers = {}, .switches = {"thread=off"}});
    // The handle keeps the rules that it was opened under.
    EXPECT_EQ(E_HANDLE, Export<CloseFunction>("PTCloseProvider")(handle));
    ++s_abandoned;
}

TEST_F(SimulatedProviderTest, FinishNamesWhatIsOpenAndResetForgetsIt) {
    const HPTPROVIDER handle = Open();
    m_provider.Finish();
    ASSERT_EQ(1U, m_provider.Report().breaches.size());
    m_provider.Reset();
    EXPECT_TRUE(m_provider.Report().breaches.empty());
    EXPECT_TRUE(m_provider.Report().calls.empty());
    Close(handle);
}

TEST_F(SimulatedProviderTest, PrintersOfTheSettingsReplaceTheModels) {
    m_provider.Configure({.device = DeviceFolder("simprinter"),
                          .printers = {"My queue"},
                          .switches = {},
                          .recordTickets = false});
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(kNoSuchPrinter, Export<OpenFunction>("PTOpenProvider")(L"SimPrinter", 1, &handle));
    EXPECT_EQ(S_OK, Export<OpenFunction>("PTOpenProvider")(L"my queue", 1, &handle));
    Close(handle);
}

TEST_F(SimulatedProviderTest, WrongSettingsAreRefusedWithOneLine) {
    EXPECT_EQ("switch private: \"some\" is none of known, strict, all",
              ::tests::MessageOf<ProviderConfigurationError>([&] {
                  m_provider.Configure(
                      {.device = DeviceFolder("simprinter"), .printers = {}, .switches = {"private=some"}});
              }));
    EXPECT_THROW(m_provider.Configure({.device = "Z:\\no such folder", .printers = {}, .switches = {}}),
                 ProviderConfigurationError);
    // The old ones are still in force.
    Close(Open());
}

TEST_F(SimulatedProviderTest, ErrorTextIsCutToItsRoom) {
    auto* const pConfigure = Export<SimConfigureFunction>("SimConfigure");
    char error[8] = "xxxxxxx";
    EXPECT_EQ(E_INVALIDARG, pConfigure("[]", error, sizeof(error)));
    EXPECT_STREQ("the con", error);
    EXPECT_EQ(E_INVALIDARG, pConfigure("[]", nullptr, 0));
    EXPECT_EQ(E_INVALIDARG, pConfigure(nullptr, error, sizeof(error)));
}

TEST_F(SimulatedProviderTest, ReportNeedsRoomForAllOfIt) {
    auto* const pReport = Export<SimReportFunction>("SimReport");
    const SIZE_T size = pReport(nullptr, 0);
    std::string text(size, 'x');
    EXPECT_EQ(size, pReport(text.data(), size - 1));
    EXPECT_EQ(std::string(size, 'x'), text);
    EXPECT_EQ(size, pReport(text.data(), size));
    EXPECT_EQ('\0', text.back());
    EXPECT_EQ('{', text.front());
}

TEST_F(SimulatedProviderTest, DefaultTicketIsWrittenAsTheSwitchesWantIt) {
    m_provider.Configure(
        {.device = DeviceFolder("simprinter"), .printers = {}, .switches = {"encoding=utf16le"}});
    const std::string wide = m_provider.DefaultTicket();
    EXPECT_EQ(std::string("\xFF\xFE<\0", 4), wide.substr(0, 4));
    EXPECT_EQ(12U, Summarize(wide).size());
}

TEST_F(SimulatedProviderTest, TokenThatIsNoneIsRefused) {
    EXPECT_THROW(m_provider.ExpectToken(reinterpret_cast<HANDLE>(std::uintptr_t{0x7FFF0})),
                 std::system_error);
    m_provider.ExpectToken(nullptr);
}

TEST(SimulatedProviderLoad, RefusesWhatCannotBeLoadedOrIsAnother) {
    EXPECT_THROW(SimulatedProvider(::tests::ProgramFolder() / "nothing.dll"), std::runtime_error);
    wchar_t system[MAX_PATH] = L"";
    GetSystemDirectoryW(system, MAX_PATH);
    const std::string refusal = ::tests::Thrown<std::runtime_error>(
        [&] { const SimulatedProvider other(std::filesystem::path(system) / L"kernel32.dll"); });
    EXPECT_TRUE(refusal.ends_with("kernel32.dll: not the simulated print ticket provider")) << refusal;
}

// Without a host, the environment says what to simulate.
class EnvironmentTest : public testing::Test {
  protected:
    void TearDown() override {
        SetEnvironmentVariableW(L"PRNTVPT_CONFIGURATION", nullptr);
        std::filesystem::remove(m_path);
    }
    void Write(const std::string& text) const {
        std::ofstream(m_path, std::ios::binary) << text;
        SetEnvironmentVariableW(L"PRNTVPT_CONFIGURATION", m_path.c_str());
    }

    const std::filesystem::path m_path =
        std::filesystem::temp_directory_path() / "prntvpt_configuration.json";
    Provider m_provider;
    HPTPROVIDER m_handle = nullptr;
};

TEST_F(EnvironmentTest, NamesAFileWithTheConfiguration) {
    Write(ConfigurationFor({"us=1"}));
    EXPECT_EQ(S_OK, m_provider.OpenProvider(L"SimPrinter", 1, &m_handle));
    EXPECT_NE(std::string::npos, m_provider.DefaultTicket().find("NorthAmericaLetter"));
    EXPECT_EQ(S_OK, m_provider.CloseProvider(m_handle));
}

TEST_F(EnvironmentTest, DoesNotCountOnceAHostHasConfigured) {
    Write(ConfigurationFor({"us=1"}));
    std::string error;
    ASSERT_EQ(S_OK, m_provider.Configure(ConfigurationFor({}).c_str(), error));
    EXPECT_EQ(std::string::npos, m_provider.DefaultTicket().find("NorthAmericaLetter"));
}

TEST_F(EnvironmentTest, WrongFileFailsTheCallAndIsNoted) {
    Write(R"({"device": ".", "colour": 1})");
    EXPECT_EQ(E_UNEXPECTED, m_provider.OpenProvider(L"SimPrinter", 1, &m_handle));
    EXPECT_EQ((std::vector<std::string>{"PTOpenProvider: unknown key \"colour\" in the configuration"}),
              m_provider.Report().notes);
    EXPECT_EQ(kNoSuchPrinter, m_provider.OpenProvider(L"SimPrinter", 1, &m_handle));
}

}  // namespace
}  // namespace devkit::prntvpt
