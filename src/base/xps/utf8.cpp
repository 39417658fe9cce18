#include "base/xps/utf8.h"

#include "platform/windows.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ostream>
#include <tuple>

#include "base/logging/check.h"
#include "platform/utf.h"

namespace base::xps {
namespace {

void RequireText(std::wstring_view text) { logging::ThrowIfNull(text.data(), "pWideCharStr is null."); }

// The bytes written.
std::size_t Convert(std::wstring_view text, char* buffer, std::size_t size) {
    return static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(),
                                                        static_cast<int>(text.size()), buffer,
                                                        static_cast<int>(size), nullptr, nullptr));
}

bool IsSpecial(wchar_t unit) noexcept {
    constexpr std::uint64_t kSpecial = std::uint64_t{1} << L'&' | std::uint64_t{1} << L'<' |
                                       std::uint64_t{1} << L'>' | std::uint64_t{1} << L'"' |
                                       std::uint64_t{1} << L'\'';
    return unit < 64 && (kSpecial >> unit & 1) != 0;
}

std::string_view EntityOf(wchar_t character) {
    switch (character) {
        case L'&':
            return "&amp;";
        case L'<':
            return "&lt;";
        case L'>':
            return "&gt;";
        case L'"':
            return "&quot;";
        default:
            return "&apos;";
    }
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
    RequireText(text);
    std::string bytes(text.size(), '\0');
    if (Narrow(text, bytes.data())) return bytes;
    return platform::ToUtf8(text);
}

void Utf8Writer::WriteLongAscii(std::string_view text) {
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), m_bytes.size()))) {
        const std::string_view piece = text.substr(0, m_bytes.size());
        std::ranges::copy(piece, Reserve(piece.size()));
        m_used += piece.size();
    }
}

void Utf8Writer::WriteText(std::wstring_view text) {
    RequireText(text);
    Append(text);
}

void Utf8Writer::WriteEscaped(std::wstring_view text) {
    RequireText(text);
    for (;;) {
        const auto special = std::ranges::find_if(text, IsSpecial);
        Append({text.begin(), special});
        if (special == text.end()) return;
        WriteAscii(EntityOf(*special));
        text = {special + 1, text.end()};
    }
}

void Utf8Writer::Append(std::wstring_view text) {
    // No UTF-16 unit needs more than three bytes; a pair of surrogates needs four.
    constexpr std::size_t kUnits = std::tuple_size_v<decltype(m_bytes)> / 3;
    while (!text.empty()) {
        std::size_t count = std::min(text.size(), kUnits);
        if (count < text.size() && IS_HIGH_SURROGATE(text[count - 1])) --count;
        const std::wstring_view piece = text.substr(0, count);
        m_used += Narrow(piece, Reserve(count)) ? count : Convert(piece, Reserve(3 * count), 3 * count);
        text.remove_prefix(count);
    }
}

char* Utf8Writer::Reserve(std::size_t count) {
    if (count > m_bytes.size() - m_used) Flush();
    return m_bytes.data() + m_used;
}

void Utf8Writer::Flush() {
    m_sink.write(m_bytes.data(), static_cast<std::streamsize>(m_used));
    m_used = 0;
}

}  // namespace base::xps
