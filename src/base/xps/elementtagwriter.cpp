#include "base/xps/elementtagwriter.h"

#include <algorithm>
#include <ostream>

#include "base/xps/utf8.h"

namespace base::xps {
namespace {

// The library's own searches call the system for each character.
template <typename Predicate>
std::wstring_view Strip(std::wstring_view text, Predicate isStripped) noexcept {
    while (!text.empty() && isStripped(text.front())) text.remove_prefix(1);
    while (!text.empty() && isStripped(text.back())) text.remove_suffix(1);
    return text;
}

void WriteAttribute(Utf8Writer& writer, const TagAttribute& attribute) {
    writer.WriteAscii(" ");
    writer.Write(attribute.name);
    writer.WriteAscii("=\"");
    attribute.isEscaped ? writer.WriteEscaped(attribute.value) : writer.Write(attribute.value);
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
    constexpr auto kIsBlank = [](wchar_t character) { return character == L' '; };
    constexpr auto kIsBracket = [](wchar_t character) { return character == L'<' || character == L'>'; };
    return Strip(Strip(text, kIsBlank), kIsBracket);
}

void ElementTagWriter::FormatStartTag(std::wstring_view text, std::span<const TagAttribute> attributes) {
    Utf8Writer writer(*m_pSink);
    writer.WriteAscii("<");
    writer.Write(text);
    for (const TagAttribute& attribute : attributes) WriteAttribute(writer, attribute);
    writer.WriteAscii(">");
}

std::string ElementTagWriter::FormatEndTag(std::wstring_view text) const {
    const std::wstring_view name(text.begin(), std::ranges::find(text, L' '));
    return "</" + ToUtf8(name) + ">";
}

void ElementTagWriter::WriteEndTags() noexcept {
    m_pSink->write(m_endTags.data(), static_cast<std::streamsize>(m_endTags.size()));
}

}  // namespace base::xps
