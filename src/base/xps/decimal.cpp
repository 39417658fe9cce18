#include "base/xps/decimal.h"

#include <array>
#include <charconv>
#include <limits>

namespace base::xps {

float ParseDecimal(std::wstring_view text) noexcept {
    const std::size_t start = text.find_first_not_of(L" \t\n\v\f\r");
    if (start == std::wstring_view::npos) return 0;
    text.remove_prefix(start);
    // std::from_chars takes no plus sign, and takes words such as "inf" that page markup does not know.
    if (text.starts_with(L'+') && !text.starts_with(L"+-")) text.remove_prefix(1);
    text = text.substr(0, text.find_first_not_of(L"0123456789+-.eE"));

    const std::string digits(text.begin(), text.end());
    float value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return result.ec == std::errc() ? value : 0;
}

std::wstring FormatDecimal(float value) {
    // A sign, every digit before the point that a float can have, the point and the two decimals.
    std::array<char, std::numeric_limits<float>::max_exponent10 + 5> buffer;
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, 2);
    return std::wstring(buffer.data(), result.ptr);
}

}  // namespace base::xps
