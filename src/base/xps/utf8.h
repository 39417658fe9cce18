#pragma once

#include <array>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

// UTF-16 text as UTF-8. A surrogate without its partner becomes U+FFFD. Text without storage (a null pointer,
// which is not the same as empty text) throws std::invalid_argument.
namespace base::xps {

[[nodiscard]] std::string ToUtf8(std::wstring_view text);

// Writes into a stream without a copy of the whole text. The stream is called once for a few kilobytes and at
// the end, because each call has its price; a failing stream shows it in its state, and the stream must not
// throw.
class Utf8Writer {
  public:
    explicit Utf8Writer(std::ostream& sink) noexcept : m_sink(sink) {}
    Utf8Writer(const Utf8Writer&) = delete;
    Utf8Writer& operator=(const Utf8Writer&) = delete;
    ~Utf8Writer() { Flush(); }

    void WriteAscii(std::string_view text);
    void Write(std::wstring_view text);
    // The same with &, <, >, " and ' written as the five predefined entities of XML.
    void WriteEscaped(std::wstring_view text);

  private:
    void Append(std::wstring_view text);
    void Flush();
    // Makes room for so many bytes, which are not more than the buffer's, and tells where.
    [[nodiscard]] char* Reserve(std::size_t count);

    std::ostream& m_sink;
    std::size_t m_used = 0;
    std::array<char, 4096> m_bytes;
};

}  // namespace base::xps
