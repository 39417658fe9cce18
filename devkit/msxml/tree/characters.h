#pragma once

#include <string_view>

namespace devkit::msxml {

// The index of the first character that XML 1.0 does not allow (a control character, a surrogate that is not
// one of a pair, U+FFFE, U+FFFF), or npos.
[[nodiscard]] std::size_t FindForbiddenCharacter(std::wstring_view text) noexcept;

// Whether the text is nothing but space, tab, carriage return and line feed. True for the empty text.
[[nodiscard]] bool IsWhiteSpace(std::wstring_view text) noexcept;

}  // namespace devkit::msxml
