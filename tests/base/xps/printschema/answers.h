#pragma once

#include "platform/windows.h"

namespace tests {

// What reading a ticket answers where something is missing, and where it is no integer.
inline constexpr HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
inline constexpr HRESULT kNoInteger = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
// A code that nothing answers but what a test has told to.
inline constexpr HRESULT kInjected = static_cast<HRESULT>(0xA0040123L);

}  // namespace tests
