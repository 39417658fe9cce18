#include "devkit/pipeline/filtermodule.h"

#include <gtest/gtest.h>

#include "devkit/pipeline/testfilter/testfilter.h"
#include "devkit/pipeline/testmodule.h"

namespace devkit::pipeline {
namespace {

HRESULT CodeOf(const std::filesystem::path& dll, const CLSID& clsid, std::string& text) {
    try {
        FilterModule module(dll, clsid);
        static_cast<void>(module.CreateFilter());
        return S_OK;
    } catch (const FilterError& error) {
        text = error.what();
        return error.GetHresult();
    }
}

TEST(FilterModule, MakesAFilterThroughTheClassFactory) {
    FilterModule module(TestFilterPath(), testfilter::ClassId);
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
    platform::ComPtr<IPrintPipelineFilter> filter = module.CreateFilter();
    EXPECT_TRUE(filter);
    EXPECT_EQ(module.CanUnloadNow(), S_FALSE);
    filter.Reset();
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
}

TEST(FilterModule, TakesAFilterThatIsGivenOutDirectly) {
    FilterModule module(TestFilterPath(), testfilter::DirectClassId);
    EXPECT_TRUE(module.CreateFilter());
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
}

TEST(FilterModule, TellsThatTheFileIsMissing) {
    std::string text;
    EXPECT_EQ(CodeOf(TestFilterPath().replace_filename("nowhere.dll"), testfilter::ClassId, text),
              HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
    EXPECT_TRUE(text.ends_with("nowhere.dll cannot be loaded: 0x8007007E ERROR_MOD_NOT_FOUND")) << text;
}

TEST(FilterModule, TellsThatAnExportIsMissing) {
    std::string text;
    wchar_t system[MAX_PATH];
    ASSERT_NE(GetSystemDirectoryW(system, MAX_PATH), 0U);
    EXPECT_EQ(CodeOf(std::filesystem::path(system) / "version.dll", testfilter::ClassId, text),
              HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND));
    EXPECT_EQ(text, "version.dll does not export DllGetClassObject");
}

TEST(FilterModule, TellsThatTheClassIsUnknown) {
    std::string text;
    EXPECT_EQ(CodeOf(TestFilterPath(), __uuidof(IPrintPipelineFilter), text), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(text, "testfilter.dll: DllGetClassObject answers 0x80040111 CLASS_E_CLASSNOTAVAILABLE");
}

}  // namespace
}  // namespace devkit::pipeline
