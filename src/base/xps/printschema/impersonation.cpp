#include "base/xps/printschema/impersonation.h"

namespace base::xps::printschema {

Impersonation::Impersonation(HANDLE token) noexcept
    : m_result(SetThreadToken(nullptr, token) ? S_OK : HRESULT_FROM_WIN32(GetLastError())) {}

Impersonation::~Impersonation() {
    // Nothing can be done about a thread that keeps the token, and the call's own result matters more.
    if (SUCCEEDED(m_result)) SetThreadToken(nullptr, nullptr);
}

}  // namespace base::xps::printschema
