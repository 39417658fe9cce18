#include "base/xps/printschema/valuetext.h"

#include <limits>

namespace base::xps::printschema {
namespace {

// White space as XML has it.
[[nodiscard]] std::wstring_view Trimmed(std::wstring_view text) {
    constexpr std::wstring_view space = L" \t\r\n";
    const std::size_t first = text.find_first_not_of(space);
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(space) - first + 1);
}

}  // namespace

std::optional<std::int32_t> ParseInteger(std::wstring_view text) {
    std::wstring_view digits = Trimmed(text);
    const bool isNegative = digits.starts_with(L'-');
    if (isNegative || digits.starts_with(L'+')) digits.remove_prefix(1);
    if (digits.empty()) return std::nullopt;

    constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    for (const wchar_t digit : digits) {
        if (digit < L'0' || digit > L'9') return std::nullopt;
        value = value * 10 + (digit - L'0');
        if (value > limit + (isNegative ? 1 : 0)) return std::nullopt;
    }
    return static_cast<std::int32_t>(isNegative ? -value : value);
}

std::wstring_view LocalPart(std::wstring_view text) {
    const std::wstring_view name = Trimmed(text);
    const std::size_t colon = name.find(L':');
    return colon == std::wstring_view::npos ? name : name.substr(colon + 1);
}

}  // namespace base::xps::printschema
