#include "devkit/msxml/unicode.h"

#include "platform/windows.h"

#include <stdexcept>

namespace devkit::msxml {

namespace {

constexpr std::wstring_view whiteSpace = L" \t\r\n";

int CheckedLength(std::size_t length) {
    if (length > 0x7FFFFFFF) throw std::length_error("Text is too long.");
    return static_cast<int>(length);
}

bool IsHighSurrogate(wchar_t c) noexcept { return c >= 0xD800 && c < 0xDC00; }
bool IsLowSurrogate(wchar_t c) noexcept { return c >= 0xDC00 && c < 0xE000; }

}  // namespace

std::wstring WideFromUtf8(std::string_view utf8) {
    if (utf8.empty()) return {};
    const int length = CheckedLength(utf8.size());
    std::wstring text(utf8.size(), L'\0');  // UTF-16 never takes more units than UTF-8 takes bytes
    text.resize(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, text.data(), length)));
    return text;
}

std::string Utf8FromWide(std::wstring_view text) {
    if (text.empty()) return {};
    const int length = CheckedLength(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

std::size_t FindForbiddenCharacter(std::wstring_view text) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if (c >= 0x20 && c < 0xD800) continue;
        if (c == L'\t' || c == L'\n' || c == L'\r') continue;
        if (c >= 0xE000 && c < 0xFFFE) continue;
        if (!IsHighSurrogate(c) || i + 1 == text.size() || !IsLowSurrogate(text[i + 1])) return i;
        ++i;
    }
    return std::wstring_view::npos;
}

bool IsWhiteSpace(std::wstring_view text) noexcept {
    return text.find_first_not_of(whiteSpace) == std::wstring_view::npos;
}

std::wstring_view Trimmed(std::wstring_view text) noexcept {
    const std::size_t first = text.find_first_not_of(whiteSpace);
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(whiteSpace) - first + 1);
}

}  // namespace devkit::msxml
