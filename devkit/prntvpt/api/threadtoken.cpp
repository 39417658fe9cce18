#include "devkit/prntvpt/api/threadtoken.h"

#include <memory>

namespace devkit::prntvpt {
namespace {

// Stands for the token of the calling thread and need not be opened; before Windows 8 it is no handle.
const HANDLE kCurrentThreadToken = LongToHandle(-5);

struct HandleClose {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};

}  // namespace

ThreadToken QueryThreadToken() noexcept {
    LUID id{};
    if (SUCCEEDED(GetTokenId(kCurrentThreadToken, id))) return {true, id};
    return QueryOpenedThreadToken();
}

ThreadToken QueryOpenedThreadToken() noexcept {
    HANDLE handle = nullptr;
    // As the process itself, because the impersonated user may not be allowed to open the token.
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &handle)) {
        return {GetLastError() != ERROR_NO_TOKEN, std::nullopt};
    }
    const std::unique_ptr<void, HandleClose> token(handle);
    LUID id{};
    if (FAILED(GetTokenId(token.get(), id))) return {true, std::nullopt};
    return {true, id};
}

HRESULT GetTokenId(HANDLE token, LUID& id) noexcept {
    TOKEN_STATISTICS statistics{};
    DWORD size = 0;
    if (!GetTokenInformation(token, TokenStatistics, &statistics, sizeof(statistics), &size)) {
        return HRESULT_FROM_WIN32(GetLastError());
    }
    id = statistics.TokenId;
    return S_OK;
}

}  // namespace devkit::prntvpt
