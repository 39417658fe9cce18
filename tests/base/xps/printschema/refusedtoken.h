#pragma once

#include "platform/windows.h"

namespace tests {

// Makes this program's threads fail to take any token, with the given last error, until it is destroyed.
// Giving a token back works.
class RefusedToken {
  public:
    explicit RefusedToken(DWORD lastError) noexcept;
    RefusedToken(const RefusedToken&) = delete;
    RefusedToken& operator=(const RefusedToken&) = delete;
    ~RefusedToken();
};

}  // namespace tests
