#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

// UTF-16 text as UTF-8. A surrogate without its partner becomes U+FFFD. Text without storage (a null pointer,
// which is not the same as empty text) throws std::invalid_argument.
namespace base::xps {

[[nodiscard]] std::string ToUtf8(std::wstring_view text);

// Straight into the stream, without a copy of the whole text. A failing stream shows it in its state.
void WriteUtf8(std::ostream& sink, std::wstring_view text);

// The same with &, <, >, " and ' written as the five predefined entities of XML.
void WriteEscapedUtf8(std::ostream& sink, std::wstring_view text);

}  // namespace base::xps
