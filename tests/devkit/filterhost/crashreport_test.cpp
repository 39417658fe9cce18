#include "devkit/filterhost/crashreport.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace devkit::filterhost {
namespace {

std::string CrashAt(const void* address, DWORD code, std::uintptr_t what, std::uintptr_t where,
                    const void* caller = nullptr) {
    EXCEPTION_RECORD record{};
    record.ExceptionCode = code;
    record.ExceptionAddress = const_cast<void*>(address);
    record.NumberParameters = 2;
    record.ExceptionInformation[0] = what;
    record.ExceptionInformation[1] = where;
    CONTEXT context{};
#if defined(_M_X64) || defined(__x86_64__)
    context.Rsp = reinterpret_cast<std::uintptr_t>(&caller);
#elif defined(_M_IX86) || defined(__i386__)
    context.Esp = reinterpret_cast<std::uintptr_t>(&caller);
#endif
    return DescribeCrash({&record, &context});
}

// An address in a DLL, so many bytes behind its start.
const void* InSystem(std::uintptr_t offset) {
    return reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(GetModuleHandleW(L"kernel32.dll")) +
                                         offset);
}

TEST(CrashText, HasTheExceptionItsAddressAndTheModuleWithTheOffset) {
    EXPECT_EQ("the filter crashed with 0xC0000005 ACCESS_VIOLATION reading 0x10 at kernel32.dll+0x1234",
              CrashAt(InSystem(0x1234), EXCEPTION_ACCESS_VIOLATION, 0, 0x10));
    EXPECT_EQ("the filter crashed with 0xC0000005 ACCESS_VIOLATION writing 0x20 at kernel32.dll+0x40",
              CrashAt(InSystem(0x40), EXCEPTION_ACCESS_VIOLATION, 1, 0x20));
    EXPECT_EQ("the filter crashed with 0xC0000094 INT_DIVIDE_BY_ZERO at kernel32.dll+0x40",
              CrashAt(InSystem(0x40), EXCEPTION_INT_DIVIDE_BY_ZERO, 0, 0));
    EXPECT_EQ("the filter crashed with 0xE0000001 at kernel32.dll+0x40",
              CrashAt(InSystem(0x40), 0xE0000001, 0, 0));
}

TEST(CrashText, BlamesTheKitForWhatCrashesInThisProgram) {
    const auto* const program = reinterpret_cast<const char*>(GetModuleHandleW(nullptr));
    const std::string text = CrashAt(program + 0x1000, EXCEPTION_ACCESS_VIOLATION, 0, 0x10);
    EXPECT_TRUE(text.starts_with("the kit crashed with 0xC0000005 ACCESS_VIOLATION reading 0x10 at test_"))
        << text;
    EXPECT_TRUE(text.ends_with(".exe+0x1000")) << text;
}

TEST(CrashText, OfAJumpToNowhereNamesTheCaller) {
    EXPECT_EQ("the filter crashed with 0xC0000005 ACCESS_VIOLATION running 0x0, called by kernel32.dll+0x88",
              CrashAt(nullptr, EXCEPTION_ACCESS_VIOLATION, 8, 0, InSystem(0x88)));
}

TEST(CrashText, OfAnAddressInNoModuleIsTheAddress) {
    EXPECT_EQ("the filter crashed with 0xC000001D ILLEGAL_INSTRUCTION at address 0x10",
              CrashAt(reinterpret_cast<const void*>(0x10), EXCEPTION_ILLEGAL_INSTRUCTION, 0, 0));
}

}  // namespace
}  // namespace devkit::filterhost
