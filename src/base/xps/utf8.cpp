#include "base/xps/utf8.h"

#include "platform/windows.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ostream>

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

void WriteUtf8(std::ostream& sink, std::wstring_view text) {
    RequireText(text);
    constexpr std::size_t kUnits = 1024;
    // No UTF-16 unit needs more than three bytes; a pair of surrogates needs four.
    std::array<char, 3 * kUnits> bytes;
    while (!text.empty()) {
        std::size_t count = std::min(text.size(), kUnits);
        if (count < text.size() && IS_HIGH_SURROGATE(text[count - 1])) --count;
        std::size_t length = count;
        if (const std::wstring_view piece = text.substr(0, count); IsAscii(piece)) {
            std::ranges::transform(piece, bytes.begin(),
                                   [](wchar_t unit) { return static_cast<char>(unit); });
        } else {
            length = Convert(piece, bytes.data(), bytes.size());
        }
        sink.write(bytes.data(), static_cast<std::streamsize>(length));
        text.remove_prefix(count);
    }
}

void WriteEscapedUtf8(std::ostream& sink, std::wstring_view text) {
    RequireText(text);
    for (;;) {
        const std::size_t special = text.find_first_of(L"&<>\"'");
        WriteUtf8(sink, text.substr(0, special));
        if (special == std::wstring_view::npos) return;
        const std::string_view entity = EntityOf(text[special]);
        sink.write(entity.data(), static_cast<std::streamsize>(entity.size()));
        text.remove_prefix(special + 1);
    }
}

}  // namespace base::xps
