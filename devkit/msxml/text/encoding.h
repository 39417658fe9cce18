#pragma once

#include <string>
#include <string_view>

namespace devkit::msxml {

// Encodings of documents: UTF-8 and UTF-16, the two that every XML processor has and XPS allows alone.

// A document's bytes as UTF-8 without a byte order mark. The encoding is that of a byte order mark, else
// UTF-16 when the bytes begin with "<" in it, else that of the XML declaration, else UTF-8. UTF-8 is passed
// on as it is, whether or not it is well-formed. Throws ParseFailure: XmlInvalidEncoding for any other
// encoding, XmlInvalidSwitch for a declaration that the bytes contradict (UTF-16 by its name in 8-bit text,
// or the other way round), XmlBadCharData for half a character.
[[nodiscard]] std::string DecodeBytes(std::string_view bytes);

// A text as UTF-8, whatever encoding it declares. Throws ParseFailure with XmlBadCharData for a character
// that XML does not have.
[[nodiscard]] std::string EncodeText(std::wstring_view text);

// Whether a declaration's name for an encoding stands for UTF-16.
[[nodiscard]] bool IsUtf16(std::wstring_view name) noexcept;

// A document's text in the encoding of that name. UTF-16 is little-endian behind a byte order mark unless the
// name says otherwise; UTF-8 has no mark. Refused with XmlInvalidEncoding for any other name.
[[nodiscard]] std::string Encode(std::wstring_view text, std::wstring_view name);

}  // namespace devkit::msxml
