#include "devkit/common/importtable.h"

#include <gtest/gtest.h>

namespace devkit::common {
namespace {

decltype(&GetCurrentProcessId) g_system = nullptr;

DWORD WINAPI OneMore() { return g_system() + 1; }

TEST(ImportTable, AFunctionOfTheProgramStandsInForWhatAModuleImports) {
    HMODULE program = GetModuleHandleW(nullptr);
    const DWORD id = GetCurrentProcessId();
    const ImportReplacements replacements = {{"GetCurrentProcessId", ReplaceWith(&OneMore, g_system)},
                                             {"NobodyImportsThis", ReplaceWith(&OneMore, g_system)}};
    EXPECT_EQ(1U, ReplaceImports(program, replacements));
    EXPECT_EQ(id + 1, GetCurrentProcessId());
    // What stands there already is not taken for the system's.
    EXPECT_EQ(0U, ReplaceImports(program, replacements));
    EXPECT_EQ(id + 1, GetCurrentProcessId());

    decltype(&GetCurrentProcessId) before = nullptr;
    EXPECT_EQ(1U, ReplaceImports(program, {{"GetCurrentProcessId", ReplaceWith(g_system, before)}}));
    EXPECT_EQ(&OneMore, before);
    EXPECT_EQ(id, GetCurrentProcessId());
}

TEST(ImportTable, AModuleThatImportsNothingHasNothingReplaced) {
    decltype(&GetCurrentProcessId) before = nullptr;
    EXPECT_EQ(0U, ReplaceImports(GetModuleHandleW(L"ntdll.dll"),
                                 {{"GetCurrentProcessId", ReplaceWith(&OneMore, before)}}));
    EXPECT_EQ(nullptr, before);
}

TEST(ImportTable, AnImageIsAsLongAsItsAddressesReach) {
    HMODULE program = GetModuleHandleW(nullptr);
    const auto offset =
        reinterpret_cast<std::uintptr_t>(&OneMore) - reinterpret_cast<std::uintptr_t>(program);
    EXPECT_LT(offset, SizeOfImage(program));
    EXPECT_EQ(0U, SizeOfImage(program) % 4096);
}

TEST(ImportTable, AModuleTellsWhoseLinkerMadeIt) {
#ifdef __GNUC__
    EXPECT_TRUE(IsLinkedByGnu(GetModuleHandleW(nullptr)));
#else
    EXPECT_FALSE(IsLinkedByGnu(GetModuleHandleW(nullptr)));
#endif
}

}  // namespace
}  // namespace devkit::common
