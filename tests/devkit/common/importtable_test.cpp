#include "devkit/common/importtable.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

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

// What the loader has made of a file with two libraries: of the first no names are left, the second gives a
// function by its number and one by its name.
struct LoadedImage {
    IMAGE_DOS_HEADER dos{};
    IMAGE_NT_HEADERS nt{};
    IMAGE_IMPORT_DESCRIPTOR libraries[3]{};
    IMAGE_THUNK_DATA names[3]{};
    IMAGE_THUNK_DATA slotsWithoutNames[2]{};
    IMAGE_THUNK_DATA slots[3]{};
    struct {
        WORD hint = 0;
        char text[16] = "Function";
    } name;

    LoadedImage() {
        // As linkers write it: who takes it for names goes astray.
        dos.e_magic = IMAGE_DOS_SIGNATURE;
        dos.e_cblp = 0x90;
        dos.e_cp = 3;
        dos.e_cparhdr = 4;
        dos.e_maxalloc = 0xFFFF;
        dos.e_sp = 0xB8;
        dos.e_lfanew = static_cast<LONG>(OffsetOf(&nt));
        nt.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress = OffsetOf(libraries);
        libraries[0].Name = libraries[1].Name = OffsetOf(name.text);
        libraries[0].FirstThunk = OffsetOf(slotsWithoutNames);
        libraries[1].FirstThunk = OffsetOf(slots);
        libraries[1].OriginalFirstThunk = OffsetOf(names);
        names[0].u1.Ordinal = IMAGE_ORDINAL_FLAG | 7;
        names[1].u1.AddressOfData = OffsetOf(&name);
        for (IMAGE_THUNK_DATA* pSlot : {&slotsWithoutNames[0], &slots[0], &slots[1]})
            pSlot->u1.Function = kSystem;
    }
    [[nodiscard]] HMODULE Module() { return reinterpret_cast<HMODULE>(this); }
    [[nodiscard]] DWORD OffsetOf(const void* pMember) const {
        return static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(pMember) -
                                  reinterpret_cast<std::uintptr_t>(this));
    }

    static constexpr ULONG_PTR kSystem = 0x1234;
};

class LoadedImageTest : public testing::Test {
  protected:
    std::size_t Replace() {
        return ReplaceImports(m_image.Module(), {{"Function", ReplaceWith(&OneMore, m_pBefore)}});
    }
    [[nodiscard]] std::uintptr_t Before() const { return reinterpret_cast<std::uintptr_t>(m_pBefore); }

    LoadedImage m_image;
    decltype(&GetCurrentProcessId) m_pBefore = nullptr;
};

TEST_F(LoadedImageTest, WhatIsImportedByNumberOrWithoutItsNameIsLeftAlone) {
    EXPECT_EQ(1U, Replace());
    EXPECT_EQ(LoadedImage::kSystem, Before());
    EXPECT_EQ(LoadedImage::kSystem, m_image.slotsWithoutNames[0].u1.Function);
    EXPECT_EQ(LoadedImage::kSystem, m_image.slots[0].u1.Function);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&OneMore), m_image.slots[1].u1.Function);
}

TEST_F(LoadedImageTest, OfAModuleThatImportsNothingNothingIsReplaced) {
    m_image.nt.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress = 0;
    // What stands at the start of the module could be taken for the table.
    static_assert(offsetof(IMAGE_DOS_HEADER, e_lfanew) >= sizeof(IMAGE_IMPORT_DESCRIPTOR));
    std::memcpy(&m_image.dos, &m_image.libraries[1], sizeof(IMAGE_IMPORT_DESCRIPTOR));
    EXPECT_EQ(0U, Replace());
    EXPECT_EQ(0U, Before());
    EXPECT_EQ(LoadedImage::kSystem, m_image.slots[1].u1.Function);
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
