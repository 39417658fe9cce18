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

void WriteAttribute(std::ostream& sink, const TagAttribute& attribute) {
    sink.put(' ');
    WriteUtf8(sink, attribute.m_name);
    sink.write("=\"", 2);
    attribute.m_isEscaped ? WriteEscapedUtf8(sink, attribute.m_value) : WriteUtf8(sink, attribute.m_value);
    sink.put('"');
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

std::wstring_view ElementTagWriter::Normalize(std::wstring_view text) noexcept {
    return Strip(Strip(text, L" "), L"<>");
}

void ElementTagWriter::FormatStartTag(std::wstring_view text, std::span<const TagAttribute> attributes) {
    m_pSink->put('<');
    WriteUtf8(*m_pSink, text);
    for (const TagAttribute& attribute : attributes) WriteAttribute(*m_pSink, attribute);
    m_pSink->put('>');
}

std::string ElementTagWriter::FormatEndTag(std::wstring_view text) {
    return "</" + ToUtf8(text.substr(0, text.find(L' '))) + ">";
}

void ElementTagWriter::WriteEndTags() noexcept {
    m_pSink->write(m_endTags.data(), static_cast<std::streamsize>(m_endTags.size()));
}

}  // namespace base::xps
