#pragma once

#include "platform/windows.h"

#include <memory>
#include <optional>
#include <system_error>
#include <type_traits>

namespace tests {

struct HandleCloser {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, HandleCloser>;

// Which token a handle stands for: the same for every handle of one token.
[[nodiscard]] inline LUID TokenIdOf(HANDLE token) {
    TOKEN_STATISTICS statistics = {};
    DWORD size = 0;
    if (!GetTokenInformation(token, TokenStatistics, &statistics, sizeof(statistics), &size)) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    }
    return statistics.TokenId;
}

// The token that the calling thread has taken, none when it runs as its process.
[[nodiscard]] inline std::optional<LUID> ThreadTokenId() {
    HANDLE opened = nullptr;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &opened)) return std::nullopt;
    const OwnedHandle token(opened);
    return TokenIdOf(opened);
}

[[nodiscard]] inline bool SameToken(const std::optional<LUID>& first,
                                    const std::optional<LUID>& second) noexcept {
    if (!first || !second) return first.has_value() == second.has_value();
    return first->LowPart == second->LowPart && first->HighPart == second->HighPart;
}

// An impersonation token of the process's own user.
[[nodiscard]] inline OwnedHandle MakeUserToken() {
    HANDLE process = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &process)) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    }
    const OwnedHandle owner(process);
    HANDLE token = nullptr;
    if (!DuplicateToken(process, SecurityImpersonation, &token)) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    }
    return OwnedHandle(token);
}

// Makes this program's threads fail to take any token, with the given last error, until it is destroyed.
// Giving a token back works. For programs that have usertoken.cpp.
class RefusedToken {
  public:
    explicit RefusedToken(DWORD lastError) noexcept;
    RefusedToken(const RefusedToken&) = delete;
    RefusedToken& operator=(const RefusedToken&) = delete;
    ~RefusedToken();
};

}  // namespace tests
