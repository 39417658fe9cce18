#include "base/xps/elementtagwriter.h"

#include <ostream>

#include "base/xps/utf8.h"

namespace base::xps {
namespace {

std::wstring_view Strip(std::wstring_view text, std::wstring_view characters) noexcept {
    const std::size_t first = text.find_first_not_of(characters);
    if (first == std::wstring_view::npos) return text.substr(0, 0);
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

void WriteAttribute(Utf8Writer& writer, const TagAttribute& attribute) {
    writer.WriteAscii(" ");
    writer.Write(attribute.m_name);
    writer.WriteAscii("=\"");
    attribute.m_isEscaped ? writer.WriteEscaped(attribute.m_value) : writer.Write(attribute.m_value);
    writer.WriteAscii("\"");
}

}  // namespace

ElementTagWriter& ElementTagWriter::operator=(ElementTagWriter&& other) noexcept {
    std::swap(m_pSink, other.m_pSink);
    std::swap(m_endTags, other.m_endTags);
    return *this;
}

void ElementTagWriter::WriteStartTag(std::wstring_view text, std::span<const TagAttribute> attributes) {
    const std::wstring_view normalized = Normalize(text);
    m_endTags.insert(0, FormatEndTag(normalized));
    FormatStartTag(normalized, attributes);
}

std::wstring_view ElementTagWriter::Normalize(std::wstring_view text) const noexcept {
    return Strip(Strip(text, L" "), L"<>");
}

void ElementTagWriter::FormatStartTag(std::wstring_view text, std::span<const TagAttribute> attributes) {
    Utf8Writer writer(*m_pSink);
    writer.WriteAscii("<");
    writer.Write(text);
    for (const TagAttribute& attribute : attributes) WriteAttribute(writer, attribute);
    writer.WriteAscii(">");
}

std::string ElementTagWriter::FormatEndTag(std::wstring_view text) const {
    return "</" + ToUtf8(text.substr(0, text.find(L' '))) + ">";
}

void ElementTagWriter::WriteEndTags() noexcept {
    m_pSink->write(m_endTags.data(), static_cast<std::streamsize>(m_endTags.size()));
}

}  // namespace base::xps
