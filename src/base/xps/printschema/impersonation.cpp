#include "base/xps/printschema/impersonation.h"

namespace base::xps::printschema {

namespace {

[[nodiscard]] HRESULT TakeToken(HANDLE token) noexcept {
    if (SetThreadToken(nullptr, token)) return S_OK;
    const DWORD error = GetLastError();
    // A failure that does not say why must not pass for a success.
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

}  // namespace

Impersonation::Impersonation(HANDLE token) noexcept : m_result(TakeToken(token)) {}

Impersonation::~Impersonation() {
    // Nothing can be done about a thread that keeps the token, and the call's own result matters more.
    if (SUCCEEDED(m_result)) SetThreadToken(nullptr, nullptr);
}

}  // namespace base::xps::printschema
