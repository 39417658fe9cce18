#include "devkit/msxml/xpathprefixes.h"

#include <algorithm>

namespace devkit::msxml {

namespace {

// Every character that can be part of a name or a number; what it is exactly is the parser's to find out.
bool IsWord(wchar_t c) noexcept {
    constexpr std::wstring_view others = L" \t\r\n()[].@,:/|+=!<>*$\"'";
    return c == L'.' || others.find(c) == std::wstring_view::npos;
}

}  // namespace

std::vector<std::wstring_view> PrefixesIn(std::wstring_view expression) {
    std::vector<std::wstring_view> prefixes;
    std::size_t i = 0;
    while (i < expression.size()) {
        const wchar_t c = expression[i];
        if (c == L'"' || c == L'\'') {
            i = std::min(expression.find(c, i + 1), expression.size() - 1) + 1;
            continue;
        }
        if (!IsWord(c)) {
            ++i;
            continue;
        }
        const std::size_t start = i;
        while (i < expression.size() && IsWord(expression[i])) ++i;
        const std::wstring_view rest = expression.substr(i);
        if (rest.starts_with(L':') && !rest.starts_with(L"::"))
            prefixes.push_back(expression.substr(start, i - start));
        // An axis is left behind with both colons, or the second would look like one of a prefix.
        if (rest.starts_with(L"::")) i += 2;
    }
    return prefixes;
}

}  // namespace devkit::msxml
