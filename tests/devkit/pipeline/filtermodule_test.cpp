#include "devkit/pipeline/filtermodule.h"

#include <gtest/gtest.h>

#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/testfilter/testfilter.h"
#include "thrown.h"

namespace devkit::pipeline {
namespace {

HRESULT CodeOf(const std::filesystem::path& dll, const CLSID& clsid, std::string& text) {
    const auto make = [&] { static_cast<void>(FilterModule(dll, clsid).CreateFilter()); };
    text = tests::MessageOf<FilterError>(make);
    return tests::ThrownCode<FilterError>(make);
}

TEST(FilterModule, MakesAFilterThroughTheClassFactory) {
    FilterModule module(TestFilterPath(), testfilter::kClassId);
    EXPECT_EQ(S_OK, module.CanUnloadNow());
    platform::ComPtr<IPrintPipelineFilter> filter = module.CreateFilter();
    EXPECT_TRUE(filter);
    EXPECT_EQ(S_FALSE, module.CanUnloadNow());
    filter.Reset();
    EXPECT_EQ(S_OK, module.CanUnloadNow());
}

TEST(FilterModule, TakesAFilterThatIsGivenOutDirectly) {
    FilterModule module(TestFilterPath(), testfilter::kDirectClassId);
    EXPECT_TRUE(module.CreateFilter());
    EXPECT_EQ(S_OK, module.CanUnloadNow());
}

TEST(FilterModule, TellsThatTheFileIsMissing) {
    std::string text;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND),
              CodeOf(TestFilterPath().replace_filename("nowhere.dll"), testfilter::kClassId, text));
    EXPECT_NE(std::string::npos, text.find("nowhere.dll cannot be loaded: cannot be opened")) << text;
}

TEST(FilterModule, TellsWhichDllIsMissing) {
    std::string text;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND),
              CodeOf(TestFilterPath().replace_filename("testneedy.dll"), testfilter::kClassId, text));
    EXPECT_TRUE(text.ends_with("testneedy.dll needs testmissing.dll, which is missing")) << text;
}

TEST(FilterModule, TellsThatAnExportIsMissing) {
    std::string text;
    wchar_t system[MAX_PATH];
    ASSERT_NE(0U, GetSystemDirectoryW(system, MAX_PATH));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND),
              CodeOf(std::filesystem::path(system) / "version.dll", testfilter::kClassId, text));
    EXPECT_EQ("version.dll does not export DllGetClassObject", text);
}

TEST(FilterModule, TellsThatTheClassIsUnknown) {
    std::string text;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, CodeOf(TestFilterPath(), __uuidof(IPrintPipelineFilter), text));
    EXPECT_EQ("testfilter.dll: DllGetClassObject answers 0x80040111 CLASS_E_CLASSNOTAVAILABLE", text);
}

}  // namespace
}  // namespace devkit::pipeline
