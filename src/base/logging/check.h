#pragma once

#include "platform/windows.h"

#include <source_location>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/logging/exceptions.h"

namespace base::logging {

// The throwing file's path relative to the source root, so that a message does not depend on where it was
// built.
[[nodiscard]] const char* SourcePath(const std::source_location& where) noexcept;

// "FILE(LINE) : MESSAGE\n" for the place that is given.
[[nodiscard]] std::string Located(std::string_view message, const std::source_location& where);

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
