#pragma once

#include "platform/windows.h"

namespace devkit::pipeline {

// An impersonation token of the process's own user, as the pipeline hands one out for the submitting user.
class UserToken {
  public:
    // Throws std::system_error when the system gives none.
    UserToken();
    UserToken(const UserToken&) = delete;
    UserToken& operator=(const UserToken&) = delete;
    ~UserToken();

    // Borrowed.
    [[nodiscard]] HANDLE Get() const noexcept { return m_token; }
    // Whether the handle is still the token's; a filter that closed it has closed what it only borrowed, and
    // the system may have given its number to something else since.
    [[nodiscard]] bool IsOpen() const noexcept;

  private:
    HANDLE m_token = nullptr;
    LUID m_id{};
};

// Whether the calling thread impersonates.
[[nodiscard]] bool IsImpersonating() noexcept;

}  // namespace devkit::pipeline
