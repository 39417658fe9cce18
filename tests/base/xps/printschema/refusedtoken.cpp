#include "refusedtoken.h"

#include "importseam.h"

namespace tests {
namespace {

bool isRefused = false;
DWORD refusal = ERROR_SUCCESS;

BOOL WINAPI TestSetThreadToken(PHANDLE pThread, HANDLE token) {
    static const auto system =
        SystemFunction<decltype(TestSetThreadToken)>(L"advapi32.dll", "SetThreadToken");
    if (!isRefused || token == nullptr) return system(pThread, token);
    SetLastError(refusal);
    return FALSE;
}

}  // namespace

RefusedToken::RefusedToken(DWORD lastError) noexcept {
    refusal = lastError;
    isRefused = true;
}

RefusedToken::~RefusedToken() { isRefused = false; }

}  // namespace tests

TEST_IMPORT(SetThreadToken, 8, tests::TestSetThreadToken)
