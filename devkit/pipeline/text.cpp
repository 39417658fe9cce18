#include "devkit/pipeline/text.h"

#include "platform/windows.h"

#include <algorithm>

namespace devkit::pipeline {
namespace {

char LowerAscii(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

std::wstring Widen(std::string_view text) {
    if (text.empty()) return {};
    const int length = static_cast<int>(text.size());
    std::wstring wide(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string Narrow(std::wstring_view text) {
    if (text.empty()) return {};
    const int length = static_cast<int>(text.size());
    std::string narrow(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr,
                                                                    0, nullptr, nullptr)),
                       '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), static_cast<int>(narrow.size()),
                        nullptr, nullptr);
    return narrow;
}

std::string NarrowOrNull(const wchar_t* text) { return text == nullptr ? "(null)" : Narrow(text); }

bool EqualIgnoringCase(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char left, char right) { return LowerAscii(left) == LowerAscii(right); });
}

}  // namespace devkit::pipeline
