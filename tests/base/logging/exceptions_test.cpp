#include "base/logging/exceptions.h"

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include "base/logging/boundary.h"
#include "importseam.h"

namespace {

// A system with a text of its own for every code: what it was asked, and which buffers it got back.
struct MessageSystem {
    struct Call {
        DWORD flags;
        const void* pSource;
        DWORD message;
        DWORD language;
        DWORD size;
        bool hasArguments;
        bool operator==(const Call&) const = default;
    };

    std::string text;
    std::vector<Call> calls;
    std::vector<HLOCAL> given;
    std::vector<HLOCAL> freed;
};
MessageSystem* g_pMessages = nullptr;

DWORD WINAPI TestFormatMessageA(DWORD flags, const void* pSource, DWORD message, DWORD language,
                                char* pBuffer, DWORD size, va_list* pArguments) {
    static const auto pSystem =
        tests::SystemFunction<DWORD WINAPI(DWORD, const void*, DWORD, DWORD, char*, DWORD, va_list*)>(
            L"kernel32.dll", "FormatMessageA");
    if (g_pMessages == nullptr) return pSystem(flags, pSource, message, language, pBuffer, size, pArguments);
    g_pMessages->calls.push_back({flags, pSource, message, language, size, pArguments != nullptr});
    const std::string& text = g_pMessages->text;
    if (text.empty()) return 0;
    char* const pText = static_cast<char*>(LocalAlloc(LMEM_FIXED, text.size()));
    text.copy(pText, text.size());
    g_pMessages->given.push_back(pText);
    *reinterpret_cast<char**>(pBuffer) = pText;
    return static_cast<DWORD>(text.size());
}

HLOCAL WINAPI TestLocalFree(HLOCAL block) {
    static const auto pSystem = tests::SystemFunction<HLOCAL WINAPI(HLOCAL)>(L"kernel32.dll", "LocalFree");
    if (g_pMessages != nullptr && block != nullptr) g_pMessages->freed.push_back(block);
    return pSystem(block);
}

}  // namespace

TEST_IMPORT(FormatMessageA, 28, TestFormatMessageA)
TEST_IMPORT(LocalFree, 4, TestLocalFree)

namespace base::exception {
namespace {

constexpr auto kSuccessWithDetail = static_cast<HRESULT>(0x00040002);

TEST(HresultErrorTest, UnknownHresultGivesTextInLowerCaseHexadecimalAndTwoLineBreaks) {
    EXPECT_STREQ("a/b.cpp(7) : Unknown error 0xa0b0c0d\n\n",
                 HresultError(static_cast<HRESULT>(0x0A0B0C0D), "a/b.cpp", 7).what());
    EXPECT_STREQ("a/b.cpp(8) : Unknown error 0xaabbccdd\n\n",
                 HresultError(static_cast<HRESULT>(0xAABBCCDD), "a/b.cpp", 8).what());
}

TEST(HresultErrorTest, KnownHresultGivesTheSystemsOwnTextWithItsLineBreakAndOneMore) {
    for (const HRESULT hr : {E_OUTOFMEMORY, E_ACCESSDENIED, E_INVALIDARG}) {
        char text[1024];
        const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, static_cast<DWORD>(hr),
                                            0x400, text, sizeof(text), nullptr);
        ASSERT_GT(length, 2u);
        EXPECT_STREQ("\r\n", text + length - 2);
        EXPECT_EQ("a/b.cpp(7) : " + std::string(text, length) + "\n", HresultError(hr, "a/b.cpp", 7).what());
    }
}

class SystemTextTest : public testing::Test {
  protected:
    SystemTextTest() { g_pMessages = &m_messages; }
    ~SystemTextTest() override { g_pMessages = nullptr; }

    MessageSystem m_messages;
};

TEST_F(SystemTextTest, IsAskedForTheCodeInTheNeutralLanguageAndTakenAsItStands) {
    m_messages.text = "%1 is %s\r\nand more\r\n";
    EXPECT_STREQ("f(1) : %1 is %s\r\nand more\r\n\n", HresultError(E_PENDING, "f", 1).what());
    const std::vector<MessageSystem::Call> expected = {{0x1100, nullptr, 0x8000000A, 0x400, 0, false}};
    EXPECT_EQ(expected, m_messages.calls);
}

TEST_F(SystemTextTest, IsGivenBackToTheSystem) {
    m_messages.text = "text\r\n";
    const HresultError error(E_PENDING, "f", 1);
    ASSERT_EQ(1u, m_messages.given.size());
    EXPECT_EQ(m_messages.given, m_messages.freed);
}

TEST_F(SystemTextTest, ThatTheSystemLacksIsUnknown) {
    EXPECT_STREQ("f(1) : Unknown error 0x8000000a\n\n", HresultError(E_PENDING, "f", 1).what());
    EXPECT_EQ(std::vector<HLOCAL>{}, m_messages.freed);
}

TEST(HresultErrorTest, CaughtAtBoundaryReturnsExactlyTheStoredCodeAlsoASuccessCode) {
    const auto raise = [](HRESULT hr) {
        return logging::Guarded([hr]() -> HRESULT { throw HresultError(hr, "f", 1); });
    };
    EXPECT_EQ(E_ACCESSDENIED, raise(E_ACCESSDENIED));
    EXPECT_EQ(S_OK, raise(S_OK));
    EXPECT_EQ(kSuccessWithDetail, raise(kSuccessWithDetail));
}

// Answers another code than it was made with.
class OtherError final : public HresultError {
  public:
    OtherError() : HresultError(E_FAIL, "f", 1) {}
    [[nodiscard]] HRESULT GetHresult() const noexcept override { return E_ABORT; }
};

TEST(HresultErrorTest, TheBoundaryAsksTheAccessorForTheCode) {
    EXPECT_EQ(E_ABORT, logging::Guarded([]() -> HRESULT { throw OtherError(); }));
}

TEST(HresultErrorTest, IsCopyableByValue) {
    const HresultError original(E_PENDING, "f", 1);
    const HresultError copy = original;
    EXPECT_EQ(E_PENDING, copy.GetHresult());
    EXPECT_STREQ(original.what(), copy.what());
}

TEST(ErrorTest, IdErrorsAreErrorsAndNotSupportedIsNot) {
    EXPECT_THROW(throw InvalidFeatureIdError("x"), Error);
    EXPECT_THROW(throw InvalidOptionIdError("x"), Error);
    EXPECT_FALSE((std::is_base_of_v<Error, NotSupportedException>));
    EXPECT_FALSE((std::is_base_of_v<HresultError, Error>));
    EXPECT_STREQ("text", InvalidFeatureIdError("text").what());
    EXPECT_STREQ("text", InvalidOptionIdError("text").what());
    EXPECT_STREQ("text", NotSupportedException("text").what());
}

TEST(CXDExceptionTest, CarriesItsCode) {
    const CXDException failure(E_PENDING);
    EXPECT_EQ(E_PENDING, failure.GetHresult());
    EXPECT_STREQ("CXDException", failure.what());
}

}  // namespace
}  // namespace base::exception
