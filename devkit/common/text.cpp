#include "devkit/common/text.h"

#include <algorithm>
#include <array>

#include "platform/utf.h"

namespace devkit::common {
namespace {

template <typename View>
View Trim(View text, View space) noexcept {
    const std::size_t first = text.find_first_not_of(space);
    if (first == View::npos) return {};
    return text.substr(first, text.find_last_not_of(space) - first + 1);
}

}  // namespace

bool EqualIgnoringCase(std::string_view one, std::string_view other) noexcept {
    return std::ranges::equal(one, other,
                              [](char left, char right) { return LowerAscii(left) == LowerAscii(right); });
}

std::string_view Trimmed(std::string_view text) noexcept { return Trim<std::string_view>(text, " \t\r\n"); }

std::wstring_view Trimmed(std::wstring_view text) noexcept {
    return Trim<std::wstring_view>(text, L" \t\r\n");
}

std::string Counted(std::size_t count, std::string_view what) {
    std::string text = std::to_string(count);
    text.append(" ").append(what);
    if (count != 1) text += 's';
    return text;
}

std::string TextOf(REFGUID guid) {
    std::array<wchar_t, 39> text{};
    StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
    return platform::ToUtf8(text.data());
}

std::string Utf8OrNull(const wchar_t* text) { return text == nullptr ? "(null)" : platform::ToUtf8(text); }

}  // namespace devkit::common
