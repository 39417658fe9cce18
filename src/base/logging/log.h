#pragma once

#include <cstdarg>
#include <source_location>
#include <string>
#include <string_view>

namespace base::logging {

// printf-style formatting into a string that owns its text, with the conversions of the Windows C library: in
// a wide format %s takes a wide string. A null format throws std::invalid_argument; a format that the C
// library rejects throws std::runtime_error.
std::string Format(const char* format, ...)
#if defined(__GNUC__) && !defined(__clang__)
    __attribute__((format(ms_printf, 1, 2)))
#endif
    ;
std::wstring Format(const wchar_t* format, ...);
std::string FormatV(const char* format, va_list arguments);
std::wstring FormatV(const wchar_t* format, va_list arguments);

// The throwing file's path relative to the source root, so that a message does not depend on where it was
// built.
[[nodiscard]] const char* SourcePath(const std::source_location& where) noexcept;

// "FILE(LINE) : MESSAGE\n" for the place that is given.
[[nodiscard]] std::string Located(std::string_view message,
                                  const std::source_location& where = std::source_location::current());

}  // namespace base::logging
