#include "platform/windows.h"

#include <gtest/gtest.h>
#include <psapi.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "pagevalidatefilter/pagevalidatexpsfilter.h"
#include "pagevalidatefilter/peimage.h"
#include "platform/comptr.h"
#include "programfolder.h"

namespace pagevalidatefilter {
namespace {

namespace fs = std::filesystem;

using tests::ProgramFolder;

constexpr wchar_t kFileName[] = L"pagevalidatefilter.dll";

// The file built with this program, and those that the other presets' builds have left beside it.
std::vector<fs::path> BuiltFiles() {
    std::vector<fs::path> files = {ProgramFolder() / kFileName};
    for (const auto& entry : fs::directory_iterator(ProgramFolder().parent_path().parent_path())) {
        const fs::path file = entry.path() / L"bin" / kFileName;
        const bool isPreset = entry.path().filename().wstring().rfind(L"mingw-", 0) == 0;
        if (isPreset && fs::exists(file) && file != files.front()) files.push_back(file);
    }
    return files;
}

class BuiltFileTest : public testing::TestWithParam<fs::path> {
  protected:
    const PeImage m_image{GetParam()};
};

std::size_t PrivateBytes() {
    PROCESS_MEMORY_COUNTERS_EX counters = {};
    EXPECT_TRUE(GetProcessMemoryInfo(GetCurrentProcess(),
                                     reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof counters));
    return counters.PrivateUsage;
}

void LoadAndUnload(int times) {
    for (int time = 0; time < times; ++time) {
        const HMODULE module = LoadLibraryW((ProgramFolder() / kFileName).c_str());
        ASSERT_NE(nullptr, module);
        ASSERT_TRUE(FreeLibrary(module));
    }
}

// The pipeline's process loads and unloads the filter with each job. The C++ library's reserve for
// exceptions, 75 KB a time, was once left behind.
TEST(BuiltFileMemoryTest, LoadingAndUnloadingLeavesNothingBehind) {
    LoadAndUnload(20);
    const std::size_t before = PrivateBytes();
    LoadAndUnload(100);
    EXPECT_LT(PrivateBytes(), before + 100 * 4096);
    EXPECT_EQ(nullptr, GetModuleHandleW(kFileName));
}

TEST_P(BuiltFileTest, ExportsTheTwoEntryPointsUndecoratedAndNothingElse) {
    EXPECT_EQ((std::vector<std::string>{"DllCanUnloadNow", "DllGetClassObject"}), m_image.ExportNames());
    EXPECT_EQ(2u, m_image.ExportCount());
}

TEST_P(BuiltFileTest, ImportsFromSystemLibrariesAlone) {
    const std::set<std::string> system = {"advapi32.dll", "gdi32.dll",  "gdiplus.dll",  "kernel32.dll",
                                          "msvcrt.dll",   "ole32.dll",  "oleaut32.dll", "prntvpt.dll",
                                          "ucrtbase.dll", "user32.dll", "winspool.drv"};
    const auto imports = m_image.Imports();
    EXPECT_TRUE(imports.contains("kernel32.dll"));
    EXPECT_TRUE(imports.contains("prntvpt.dll"));
    for (const auto& [library, functions] : imports) {
        const bool isRuntimeSet = library.rfind("api-ms-win-crt-", 0) == 0;
        EXPECT_TRUE(isRuntimeSet || system.contains(library)) << library;
        EXPECT_FALSE(functions.contains("DllMain")) << "the entry point is that of " << library;
    }
}

TEST_P(BuiltFileTest, IsLoadedAtRandomAddressesWithoutExecutableData) {
    constexpr std::uint16_t kWanted =
        IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(kWanted, m_image.DllCharacteristics() & kWanted);
    EXPECT_EQ(m_image.Is64Bit(),
              (m_image.DllCharacteristics() & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA) != 0);
    EXPECT_TRUE(m_image.HasRelocations());
    EXPECT_EQ(0, m_image.Characteristics() & IMAGE_FILE_RELOCS_STRIPPED);
    EXPECT_NE(0, m_image.Characteristics() & IMAGE_FILE_DLL);
}

TEST_P(BuiltFileTest, IsOfTheMachineThatItsWordSizeTells) {
    EXPECT_EQ(m_image.Is64Bit() ? IMAGE_FILE_MACHINE_AMD64 : IMAGE_FILE_MACHINE_I386, m_image.Machine());
}

TEST_P(BuiltFileTest, CarriesTheVersionOfTheProject) {
    const VS_FIXEDFILEINFO version = m_image.Version();
    EXPECT_EQ(static_cast<DWORD>(PROJECT_VERSION_MAJOR << 16 | PROJECT_VERSION_MINOR),
              version.dwFileVersionMS);
    EXPECT_EQ(static_cast<DWORD>(PROJECT_VERSION_PATCH << 16), version.dwFileVersionLS);
    EXPECT_EQ(version.dwFileVersionMS, version.dwProductVersionMS);
    EXPECT_EQ(static_cast<DWORD>(VFT_DLL), version.dwFileType);
}

INSTANTIATE_TEST_SUITE_P(Architectures, BuiltFileTest, testing::ValuesIn(BuiltFiles()),
                         [](const auto& parameter) {
                             std::string name =
                                 parameter.param.parent_path().parent_path().filename().string();
                             for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             return name;
                         });

// The built file itself, loaded as the pipeline loads it.
class LoadedModuleTest : public testing::Test {
  protected:
    LoadedModuleTest() : m_module(LoadLibraryW((ProgramFolder() / kFileName).c_str())) {}
    ~LoadedModuleTest() override { FreeLibrary(m_module); }

    template <typename Function>
    [[nodiscard]] Function* Export(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(m_module, name)));
    }

    const HMODULE m_module;
};

TEST_F(LoadedModuleTest, MakesAFilterAndMayBeUnloadedWhenItIsGone) {
    ASSERT_NE(nullptr, m_module) << GetLastError();
    const auto pGetClassObject = Export<HRESULT WINAPI(REFCLSID, REFIID, void**)>("DllGetClassObject");
    const auto pCanUnloadNow = Export<HRESULT WINAPI()>("DllCanUnloadNow");
    ASSERT_NE(nullptr, pGetClassObject);
    ASSERT_NE(nullptr, pCanUnloadNow);
    EXPECT_EQ(S_OK, pCanUnloadNow());
    platform::ComPtr<IClassFactory> pFactory;
    ASSERT_EQ(S_OK,
              pGetClassObject(CLSID_PageValidateXpsFilter, __uuidof(IClassFactory), pFactory.PutVoid()));
    EXPECT_EQ(S_FALSE, pCanUnloadNow());
    platform::ComPtr<IPrintPipelineFilter> pFilter;
    ASSERT_EQ(S_OK, pFactory->CreateInstance(nullptr, __uuidof(IPrintPipelineFilter), pFilter.PutVoid()));
    pFactory.Reset();
    EXPECT_EQ(S_FALSE, pCanUnloadNow());
    EXPECT_EQ(E_FAIL, pFilter->StartOperation());
    pFilter.Reset();
    EXPECT_EQ(S_OK, pCanUnloadNow());
}

}  // namespace
}  // namespace pagevalidatefilter
