#pragma once

#include "platform/windows.h"

#include "platform/comptr.h"

namespace platform {

// Runs steps that return an HRESULT one after the other. The first failure ends it and is the result; without
// one the last step's answer is.
template <typename... Steps>
[[nodiscard]] HRESULT InOrder(Steps&&... steps) {
    HRESULT result = S_OK;
    static_cast<void>((... && SUCCEEDED(result = steps())));
    return result;
}

// The same for steps of which each needs what the one before it found: anything but S_OK ends it.
template <typename... Steps>
[[nodiscard]] HRESULT InOrderWhileFound(Steps&&... steps) {
    HRESULT result = S_OK;
    static_cast<void>((... && ((result = steps()) == S_OK)));
    return result;
}

// What a call means that is to yield an object: S_OK without one is the same as S_FALSE.
template <typename Interface>
[[nodiscard]] HRESULT Yielded(HRESULT hr, const ComPtr<Interface>& pObject) noexcept {
    return hr == S_OK && !pObject ? S_FALSE : hr;
}

}  // namespace platform
