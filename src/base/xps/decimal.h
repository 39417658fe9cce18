#pragma once

#include <string>
#include <string_view>

namespace base::xps {

// The decimal numbers of page markup. Neither direction depends on the locale.

// What the C library's number parser makes of the text: white space and a sign may lead, then the longest
// prefix that is a decimal number counts, and what follows is ignored. Text that begins with no number reads
// as 0, and so does a number that is too large for a float.
[[nodiscard]] float ParseDecimal(std::wstring_view text) noexcept;

// Two decimals, as "%.2f" prints them; for example 816.00.
[[nodiscard]] std::wstring FormatDecimal(float value);

// Several numbers, a comma between them.
template <typename Numbers>
[[nodiscard]] std::wstring FormatDecimals(const Numbers& numbers) {
    std::wstring text;
    for (const float number : numbers) {
        if (!text.empty()) text += L',';
        text += FormatDecimal(number);
    }
    return text;
}

}  // namespace base::xps
