#pragma once

#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace base::xps {

// An attribute as the parser delivered it; the texts are the parser's.
struct TagAttribute {
    std::wstring_view name;
    std::wstring_view value;
    // Whether the value is escaped again. Every other value is written as it is, even where that is not well
    // formed.
    bool isEscaped = false;
};

// Writes the tags of one element of page markup: start tags when asked to, and, when it is destroyed, the end
// tag of each, the last one first. It keeps no more of a tag than its name. The sink must outlive it and must
// report failures through its state alone, not by exceptions.
class ElementTagWriter {
  public:
    explicit ElementTagWriter(std::ostream& sink) noexcept : m_pSink(&sink) {}
    ElementTagWriter(const ElementTagWriter&) = delete;
    ElementTagWriter& operator=(const ElementTagWriter&) = delete;
    ElementTagWriter(ElementTagWriter&& other) noexcept
        : m_pSink(other.m_pSink), m_endTags(std::exchange(other.m_endTags, {})) {}
    ElementTagWriter& operator=(ElementTagWriter&& other) noexcept;
    virtual ~ElementTagWriter() { WriteEndTags(); }

    // The text is the element's name, or its name, a blank and attributes as they are to be written; the
    // attributes given follow it.
    void WriteStartTag(std::wstring_view text, std::span<const TagAttribute> attributes = {});

    // Strips blanks, and then angle brackets, from both ends of a tag's text.
    [[nodiscard]] virtual std::wstring_view Normalize(std::wstring_view text) const noexcept;

  protected:
    // Straight into the sink, "<TEXT ATTRIBUTES>".
    virtual void FormatStartTag(std::wstring_view text, std::span<const TagAttribute> attributes);
    // "</NAME>", the name being the text up to its first blank.
    [[nodiscard]] virtual std::string FormatEndTag(std::wstring_view text) const;

  private:
    void WriteEndTags() noexcept;

    std::ostream* m_pSink;
    std::string m_endTags;
};

}  // namespace base::xps
