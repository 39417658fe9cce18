#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

// UTF-16 text as UTF-8. A surrogate without its partner becomes U+FFFD. Text without storage (a null pointer,
// which is not the same as empty text) throws std::invalid_argument.
namespace base::xps {

[[nodiscard]] std::string ToUtf8(std::wstring_view text);

// Most of a page is ASCII, which needs no call of the system. Narrowing it and looking whether that was right
// is one loop, which runs on vectors; what was narrowed in vain is to be written over.
[[nodiscard]] inline bool Narrow(std::wstring_view text, char* pBytes) noexcept {
    std::uint16_t units = 0;
    for (const wchar_t unit : text) {
        units |= unit;
        *pBytes++ = static_cast<char>(unit);
    }
    return units < 0x80;
}

// Writes into a stream without a copy of the whole text. The stream is called once for a few kilobytes and at
// the end, because each call has its price; a failing stream shows it in its state, and the stream must not
// throw.
class Utf8Writer {
  public:
    explicit Utf8Writer(std::ostream& sink) noexcept : m_sink(sink) {}
    Utf8Writer(const Utf8Writer&) = delete;
    Utf8Writer& operator=(const Utf8Writer&) = delete;
    ~Utf8Writer() { Flush(); }

    void WriteAscii(std::string_view text) {
        if (text.size() > m_bytes.size() - m_used) return WriteLongAscii(text);
        text.copy(m_bytes.data() + m_used, text.size());
        m_used += text.size();
    }
    void Write(std::wstring_view text) {
        if (!text.empty() && text.size() <= m_bytes.size() - m_used &&
            Narrow(text, m_bytes.data() + m_used)) {
            m_used += text.size();
        } else {
            WriteText(text);
        }
    }
    // The same with &, <, >, " and ' written as the five predefined entities of XML.
    void WriteEscaped(std::wstring_view text);

  private:
    void WriteLongAscii(std::string_view text);
    void WriteText(std::wstring_view text);
    void Append(std::wstring_view text);
    void Flush();
    // Makes room for so many bytes, which are not more than the buffer's, and tells where.
    [[nodiscard]] char* Reserve(std::size_t count);

    std::ostream& m_sink;
    std::size_t m_used = 0;
    std::array<char, 4096> m_bytes;
};

}  // namespace base::xps
