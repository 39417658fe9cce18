#pragma once

#include "platform/windows.h"

#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace platform {

// UTF-16 and UTF-8 into each other; what is malformed becomes U+FFFD. std::length_error for text that is
// longer than the system's converters take.

[[nodiscard]] inline std::string ToUtf8(std::wstring_view text) {
    // A unit needs at most three bytes, so that their number fits too.
    if (text.size() > std::numeric_limits<int>::max() / 3) throw std::length_error("too long for UTF-8");
    const int units = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

[[nodiscard]] inline std::wstring ToUtf16(std::string_view utf8) {
    // No byte makes more than one unit.
    if (utf8.size() > std::numeric_limits<int>::max()) throw std::length_error("too long for UTF-16");
    const int size = static_cast<int>(utf8.size());
    std::wstring text(utf8.size(), L'\0');
    const int units = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, text.data(), size);
    text.resize(static_cast<std::size_t>(units));
    return text;
}

}  // namespace platform
