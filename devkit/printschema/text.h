#pragma once

#include <string>
#include <string_view>

namespace devkit::prntvpt {

// Between UTF-8 and UTF-16; what is malformed becomes U+FFFD.
[[nodiscard]] std::string ToUtf8(std::wstring_view text);
[[nodiscard]] std::wstring ToWide(std::string_view text);

// The bytes of a document as UTF-8 without a byte order mark: UTF-16 of either byte order is told by its mark
// or by the zero in its first character.
[[nodiscard]] std::string DocumentText(std::string_view bytes);

}  // namespace devkit::prntvpt
