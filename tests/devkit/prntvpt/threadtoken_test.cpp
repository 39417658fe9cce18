#include "devkit/prntvpt/api/threadtoken.h"

#include <cstdint>
#include <memory>

#include "memorystream.h"
#include "providertest.h"

namespace devkit::prntvpt {
namespace {

struct HandleClose {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using Token = std::unique_ptr<void, HandleClose>;

// An impersonation token of the process's own user.
[[nodiscard]] Token MakeToken() {
    HANDLE handle = nullptr;
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &handle));
    const Token process(handle);
    EXPECT_TRUE(DuplicateTokenEx(process.get(), TOKEN_IMPERSONATE | TOKEN_QUERY | TOKEN_DUPLICATE, nullptr,
                                 SecurityImpersonation, TokenImpersonation, &handle));
    return Token(handle);
}

// Impersonates while it lives.
class Impersonation {
  public:
    explicit Impersonation(HANDLE token) { EXPECT_TRUE(SetThreadToken(nullptr, token)); }
    Impersonation(const Impersonation&) = delete;
    ~Impersonation() { EXPECT_TRUE(SetThreadToken(nullptr, nullptr)); }
};

[[nodiscard]] bool IsSame(const LUID& left, const LUID& right) {
    return left.LowPart == right.LowPart && left.HighPart == right.HighPart;
}

TEST(ThreadToken, IsAbsentWithoutImpersonation) {
    for (const ThreadToken& token : {QueryThreadToken(), QueryOpenedThreadToken()}) {
        EXPECT_FALSE(token.impersonating);
        EXPECT_FALSE(token.id.has_value());
    }
}

TEST(ThreadToken, IsTheTokenThatTheThreadWasGiven) {
    const Token given = MakeToken();
    const Token other = MakeToken();
    LUID givenId{};
    LUID otherId{};
    ASSERT_EQ(S_OK, GetTokenId(given.get(), givenId));
    ASSERT_EQ(S_OK, GetTokenId(other.get(), otherId));
    EXPECT_FALSE(IsSame(givenId, otherId));
    const Impersonation user(given.get());
    for (const ThreadToken& token : {QueryThreadToken(), QueryOpenedThreadToken()}) {
        EXPECT_TRUE(token.impersonating);
        ASSERT_TRUE(token.id.has_value());
        EXPECT_TRUE(IsSame(*token.id, givenId));
    }
}

TEST(ThreadToken, IdOfNoTokenFails) {
    LUID id{};
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE), GetTokenId(nullptr, id));
}

class TokenTest : public ProviderTest {
  protected:
    void SetUp() override { Use({}); }
    [[nodiscard]] ProviderCall LastCall() const { return Report().calls.back(); }
};

TEST_F(TokenTest, NoTokenIsExpectedAtFirst) {
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    EXPECT_FALSE(LastCall().impersonating);
    EXPECT_EQ(std::nullopt, LastCall().expectedToken);
    EXPECT_EQ(std::vector<std::string>(), Report().notes);
}

TEST_F(TokenTest, EveryCallTellsWhetherItRunsUnderTheExpectedToken) {
    const Token expected = MakeToken();
    const Token other = MakeToken();
    ASSERT_EQ(S_OK, m_provider.ExpectToken(expected.get()));
    {
        const Impersonation user(expected.get());
        static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    }
    EXPECT_TRUE(LastCall().impersonating);
    EXPECT_EQ(true, LastCall().expectedToken);
    EXPECT_EQ(std::vector<std::string>(), Report().notes);
    {
        const Impersonation user(other.get());
        static_cast<void>(Capabilities());
    }
    EXPECT_TRUE(LastCall().impersonating);
    EXPECT_EQ(false, LastCall().expectedToken);
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    EXPECT_FALSE(LastCall().impersonating);
    EXPECT_EQ(false, LastCall().expectedToken);
    EXPECT_EQ(
        (std::vector<std::string>{"PTGetPrintCapabilities was called without the expected token",
                                  "PTMergeAndValidatePrintTicket was called without the expected token"}),
        Report().notes);
}

TEST_F(TokenTest, ClosingNeedsNoToken) {
    const Token expected = MakeToken();
    ASSERT_EQ(S_OK, m_provider.ExpectToken(expected.get()));
    Close();
    EXPECT_EQ("PTCloseProvider", LastCall().function);
    EXPECT_EQ(false, LastCall().expectedToken);
    EXPECT_EQ(std::vector<std::string>(), Report().notes);
}

TEST_F(TokenTest, ExpectationCanBeTakenBackAndOutlivesTheHandle) {
    {
        const Token expected = MakeToken();
        ASSERT_EQ(S_OK, m_provider.ExpectToken(expected.get()));
    }
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    EXPECT_EQ(false, LastCall().expectedToken);
    ASSERT_EQ(S_OK, m_provider.ExpectToken(nullptr));
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    EXPECT_EQ(std::nullopt, LastCall().expectedToken);
}

TEST_F(TokenTest, WhatIsNoTokenIsRefusedAndChangesNothing) {
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE),
              m_provider.ExpectToken(reinterpret_cast<HANDLE>(std::uintptr_t{0x7FFF0})));
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    EXPECT_EQ(std::nullopt, LastCall().expectedToken);
}

}  // namespace
}  // namespace devkit::prntvpt
