#pragma once

#include <string>
#include <string_view>

#include "devkit/msxml/parsefailure.h"

namespace devkit::msxml {

// A document's bytes as UTF-8 without a byte order mark. The encoding is that of a byte order mark, else
// UTF-16 when the bytes begin with "<" in it, else that of the XML declaration, else UTF-8. UTF-8 is passed
// on as it is, whether or not it is well-formed. Throws ParseFailure: XmlInvalidEncoding for an unknown name,
// XmlInvalidSwitch for a declaration that the bytes contradict (UTF-16 by its name in 8-bit text, or the
// other way round), XmlBadCharData for bytes that the encoding does not have.
[[nodiscard]] std::string DecodeBytes(std::string_view bytes);

// A text as UTF-8, whatever encoding it declares. Throws ParseFailure with XmlBadCharData for a character
// that XML does not have.
[[nodiscard]] std::string EncodeText(std::wstring_view text);

// A failure of that code at a place in a document's text.
[[nodiscard]] ParseFailure FailureAt(HRESULT code, const std::wstring& detail, std::wstring_view text,
                                     std::size_t position);

}  // namespace devkit::msxml
