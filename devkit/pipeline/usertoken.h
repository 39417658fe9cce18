#pragma once

#include "platform/windows.h"

#include <memory>

namespace devkit::pipeline {

// An impersonation token of the process's own user, as the pipeline hands one out for the submitting user.
class UserToken {
  public:
    // Throws std::system_error when the system gives none.
    UserToken();

    // Borrowed.
    [[nodiscard]] HANDLE Get() const noexcept { return m_token.get(); }
    // Whether the handle is still open; a filter that closed it has closed what it only borrowed.
    [[nodiscard]] bool IsOpen() const noexcept;

  private:
    struct Close {
        void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
    };
    using Handle = std::unique_ptr<void, Close>;

    Handle m_token;
};

// Whether the calling thread impersonates.
[[nodiscard]] bool IsImpersonating() noexcept;

}  // namespace devkit::pipeline
