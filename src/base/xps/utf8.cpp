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

// Most of a page is ASCII, which needs no call of the system: both loops run on vectors.
bool IsAscii(std::wstring_view text) {
    std::uint32_t units = 0;
    for (const wchar_t unit : text) units |= unit;
    return units < 0x80;
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
    return platform::ToUtf8(text);
}

void Utf8Writer::WriteAscii(std::string_view text) {
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), m_bytes.size()))) {
        const std::string_view piece = text.substr(0, m_bytes.size());
        std::ranges::copy(piece, Reserve(piece.size()));
        m_used += piece.size();
    }
}

void Utf8Writer::Write(std::wstring_view text) {
    RequireText(text);
    Append(text);
}

void Utf8Writer::WriteEscaped(std::wstring_view text) {
    RequireText(text);
    for (;;) {
        const std::size_t special = text.find_first_of(L"&<>\"'");
        Append(text.substr(0, special));
        if (special == std::wstring_view::npos) return;
        WriteAscii(EntityOf(text[special]));
        text.remove_prefix(special + 1);
    }
}

void Utf8Writer::Append(std::wstring_view text) {
    // No UTF-16 unit needs more than three bytes; a pair of surrogates needs four.
    constexpr std::size_t kUnits = std::tuple_size_v<decltype(m_bytes)> / 3;
    while (!text.empty()) {
        std::size_t count = std::min(text.size(), kUnits);
        if (count < text.size() && IS_HIGH_SURROGATE(text[count - 1])) --count;
        if (const std::wstring_view piece = text.substr(0, count); IsAscii(piece)) {
            std::ranges::transform(piece, Reserve(count),
                                   [](wchar_t unit) { return static_cast<char>(unit); });
            m_used += count;
        } else {
            m_used += Convert(piece, Reserve(3 * count), 3 * count);
        }
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
