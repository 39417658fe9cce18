#include "devkit/msxml/tree/characters.h"

#include "devkit/common/text.h"

namespace devkit::msxml {

namespace {

bool IsHighSurrogate(wchar_t c) noexcept { return c >= 0xD800 && c < 0xDC00; }
bool IsLowSurrogate(wchar_t c) noexcept { return c >= 0xDC00 && c < 0xE000; }

}  // namespace

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

bool IsWhiteSpace(std::wstring_view text) noexcept { return common::Trimmed(text).empty(); }

}  // namespace devkit::msxml
