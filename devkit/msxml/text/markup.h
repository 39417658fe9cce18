#pragma once

#include <string>
#include <string_view>

namespace devkit::msxml {

// Append one piece of markup. Refused with XmlBadCharData for a character that XML does not have,
// XmlCommentSyntax and XmlInstructionSyntax for data that would end its markup early.

// Escapes &, <, > and the carriage return, which a parser would take for a line feed. A line feed is written
// as lineFeed.
void AppendText(std::wstring& out, std::wstring_view text, std::wstring_view lineFeed);
// name="value". Escapes quotes and the white space that a parser would turn into spaces, besides.
void AppendAttribute(std::wstring& out, std::wstring_view name, std::wstring_view value);
// "]]>" in the data is divided between two sections.
void AppendCdata(std::wstring& out, std::wstring_view data);
void AppendComment(std::wstring& out, std::wstring_view data);
void AppendInstruction(std::wstring& out, std::wstring_view target, std::wstring_view data);

}  // namespace devkit::msxml
