#pragma once

#include <cstdarg>
#include <string>

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

}  // namespace base::logging
