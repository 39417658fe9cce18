#include "devkit/pipeline/usertoken.h"

#include <system_error>

namespace devkit::pipeline {
namespace {

[[noreturn]] void ThrowLastError(const char* call) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), call);
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
    m_token.reset(handle);
}

bool UserToken::IsOpen() const noexcept {
    DWORD flags = 0;
    return GetHandleInformation(m_token.get(), &flags) != FALSE;
}

bool IsImpersonating() noexcept {
    HANDLE token = nullptr;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token))
        return GetLastError() != ERROR_NO_TOKEN;
    CloseHandle(token);
    return true;
}

}  // namespace devkit::pipeline
