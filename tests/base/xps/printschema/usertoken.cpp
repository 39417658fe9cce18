#include "usertoken.h"

#include "importseam.h"

namespace tests {
namespace {

bool g_isRefused = false;
DWORD g_refusal = ERROR_SUCCESS;

BOOL WINAPI TestSetThreadToken(PHANDLE pThread, HANDLE token) {
    static auto* const pSystem =
        SystemFunction<decltype(TestSetThreadToken)>(L"advapi32.dll", "SetThreadToken");
    if (!g_isRefused || token == nullptr) return pSystem(pThread, token);
    SetLastError(g_refusal);
    return FALSE;
}

}  // namespace

RefusedToken::RefusedToken(DWORD lastError) noexcept {
    g_refusal = lastError;
    g_isRefused = true;
}

RefusedToken::~RefusedToken() { g_isRefused = false; }

}  // namespace tests

TEST_IMPORT(SetThreadToken, 8, tests::TestSetThreadToken)
