#pragma once

#include "platform/windows.h"

namespace base::xps::printschema {

// Runs the current thread as the token's user until it is destroyed; the thread is then without a token of
// its own, whatever it had before.
class Impersonation {
  public:
    // The token is borrowed. Test Result() before relying on it.
    explicit Impersonation(HANDLE token) noexcept;
    Impersonation(const Impersonation&) = delete;
    Impersonation& operator=(const Impersonation&) = delete;
    ~Impersonation();

    // S_OK, or the failure that kept the thread from taking the token: E_FAIL when the system gives no
    // reason.
    [[nodiscard]] HRESULT Result() const noexcept { return m_result; }

  private:
    HRESULT m_result;
};

}  // namespace base::xps::printschema
