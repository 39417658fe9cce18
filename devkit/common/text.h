#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace devkit::common {

// Of ASCII alone; no other character has a case here, as in part names and content types (Open Packaging
// Conventions).
[[nodiscard]] constexpr char LowerAscii(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}
[[nodiscard]] bool EqualIgnoringCase(std::string_view one, std::string_view other) noexcept;

// Without the white space of XML (space, tab, carriage return, line feed) at both ends, as a view into it.
[[nodiscard]] std::string_view Trimmed(std::string_view text) noexcept;
[[nodiscard]] std::wstring_view Trimmed(std::wstring_view text) noexcept;

// "3 pages", "1 page".
[[nodiscard]] std::string Counted(std::size_t count, std::string_view what);

// "{00000000-0000-0000-C000-000000000046}".
[[nodiscard]] std::string TextOf(REFGUID guid);

// As UTF-8; "(null)" for a null pointer.
[[nodiscard]] std::string Utf8OrNull(const wchar_t* text);

}  // namespace devkit::common
