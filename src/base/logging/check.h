#pragma once

#include "platform/windows.h"

#include <source_location>
#include <stdexcept>
#include <string_view>

#include "base/logging/exceptions.h"
#include "base/logging/log.h"

namespace base::logging {

// Throws Exception with the located message.
template <typename Exception>
[[noreturn]] void Throw(std::string_view message,
                        const std::source_location& where = std::source_location::current()) {
    throw Exception(Located(message, where));
}

// Throws HresultError with hr, a success code included.
[[noreturn]] void ThrowHresult(HRESULT hr,
                               const std::source_location& where = std::source_location::current());

// Throws HresultError when hr is a failure.
inline void ThrowIfFailed(HRESULT hr, const std::source_location& where = std::source_location::current()) {
    if (FAILED(hr)) ThrowHresult(hr, where);
}

// Throws std::invalid_argument with the message when the pointer is null.
template <typename Pointer>
void ThrowIfNull(const Pointer& pointer, std::string_view message,
                 const std::source_location& where = std::source_location::current()) {
    if (!pointer) Throw<std::invalid_argument>(message, where);
}

}  // namespace base::logging
