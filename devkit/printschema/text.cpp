#include "devkit/printschema/text.h"

#include "platform/windows.h"

#include <cstddef>

namespace devkit::prntvpt {
namespace {

[[nodiscard]] std::string FromUtf16(std::string_view bytes, bool bigEndian) {
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
        const auto first = static_cast<unsigned char>(bytes[index]);
        const auto second = static_cast<unsigned char>(bytes[index + 1]);
        text.push_back(static_cast<wchar_t>(bigEndian ? (first << 8U) | second : (second << 8U) | first));
    }
    if (text.starts_with(L'\uFEFF')) text.erase(0, 1);
    return ToUtf8(text);
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), length, nullptr, nullptr);
    return utf8;
}

std::wstring ToWide(std::string_view text) {
    const int size = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), length);
    return wide;
}

std::string DocumentText(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) return std::string(bytes.substr(3));
    const bool pair = bytes.size() >= 2;
    if (bytes.starts_with("\xFF\xFE") || (pair && bytes[0] != '\0' && bytes[1] == '\0')) {
        return FromUtf16(bytes, false);
    }
    if (bytes.starts_with("\xFE\xFF") || (pair && bytes[0] == '\0' && bytes[1] != '\0')) {
        return FromUtf16(bytes, true);
    }
    return std::string(bytes);
}

}  // namespace devkit::prntvpt
