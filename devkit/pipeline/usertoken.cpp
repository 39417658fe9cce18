#include "devkit/pipeline/usertoken.h"

#include <memory>
#include <system_error>

namespace devkit::pipeline {
namespace {

[[noreturn]] void ThrowLastError(const char* call) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), call);
}

struct Close {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, Close>;

// What the system tells one token from another by; all zeroes for a handle that is no token's.
LUID IdOf(HANDLE token) noexcept {
    TOKEN_STATISTICS facts{};
    DWORD size = 0;
    return GetTokenInformation(token, TokenStatistics, &facts, sizeof(facts), &size) ? facts.TokenId : LUID{};
}

}  // namespace

UserToken::UserToken() {
    HANDLE handle = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &handle)) {
        ThrowLastError("OpenProcessToken");
    }
    const Handle process(handle);
    if (!DuplicateTokenEx(process.get(), TOKEN_IMPERSONATE | TOKEN_QUERY, nullptr, SecurityImpersonation,
                          TokenImpersonation, &handle)) {
        ThrowLastError("DuplicateTokenEx");
    }
    m_token = handle;
    m_id = IdOf(m_token);
}

UserToken::~UserToken() {
    if (IsOpen()) CloseHandle(m_token);
}

bool UserToken::IsOpen() const noexcept {
    const LUID id = IdOf(m_token);
    return id.LowPart == m_id.LowPart && id.HighPart == m_id.HighPart &&
           (id.LowPart != 0 || id.HighPart != 0);
}

bool IsImpersonating() noexcept {
    HANDLE token = nullptr;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token))
        return GetLastError() != ERROR_NO_TOKEN;
    CloseHandle(token);
    return true;
}

}  // namespace devkit::pipeline
