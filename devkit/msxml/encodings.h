#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>

namespace devkit::msxml {

inline constexpr UINT codePageUtf16 = 1200;
inline constexpr UINT codePageUtf16BigEndian = 1201;

// The code page of an encoding by the name that XML declarations give it, in any letter case. 0 for a name
// that is not known or that this system has no table for.
[[nodiscard]] UINT FindCodePage(std::wstring_view name) noexcept;

// A document's text in the encoding of that name. UTF-16 is little-endian behind a byte order mark unless the
// name says otherwise; UTF-8 has no mark. Throws ComError with XmlInvalidEncoding for an unknown name and for
// a character that the encoding does not have.
[[nodiscard]] std::string Encode(std::wstring_view text, std::wstring_view name);

}  // namespace devkit::msxml
