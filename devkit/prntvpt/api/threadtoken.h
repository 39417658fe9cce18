#pragma once

#include "platform/windows.h"

#include <optional>

namespace devkit::prntvpt {

// The token that the calling thread impersonates with.
struct ThreadToken {
    bool impersonating = false;
    std::optional<LUID> id;  // nothing when the token cannot be queried
};
[[nodiscard]] ThreadToken QueryThreadToken() noexcept;
// The same by opening the token, for which there is no other way before Windows 8.
[[nodiscard]] ThreadToken QueryOpenedThreadToken() noexcept;

// The id of a token object: a duplicate of the token has another one. Fails with the system's code.
[[nodiscard]] HRESULT GetTokenId(HANDLE token, LUID& id) noexcept;

}  // namespace devkit::prntvpt
