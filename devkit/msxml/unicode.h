#pragma once

#include <string>
#include <string_view>

namespace devkit::msxml {

// The text of well-formed UTF-8; U+FFFD stands for what is not well-formed.
[[nodiscard]] std::wstring WideFromUtf8(std::string_view utf8);

// U+FFFD stands for a surrogate that is not one of a pair.
[[nodiscard]] std::string Utf8FromWide(std::wstring_view text);

// The index of the first character that XML 1.0 does not allow (a control character, a surrogate that is not
// one of a pair, U+FFFE, U+FFFF), or npos.
[[nodiscard]] std::size_t FindForbiddenCharacter(std::wstring_view text) noexcept;

// Whether the text is nothing but space, tab, carriage return and line feed. True for the empty text.
[[nodiscard]] bool IsWhiteSpace(std::wstring_view text) noexcept;

// Without white space at both ends.
[[nodiscard]] std::wstring_view Trimmed(std::wstring_view text) noexcept;

}  // namespace devkit::msxml
