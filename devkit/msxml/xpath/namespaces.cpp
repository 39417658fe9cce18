#include "devkit/msxml/xpath/namespaces.h"

#include <algorithm>

#include "devkit/msxml/tree/name.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml {

namespace {

constexpr std::wstring_view kSpace = L" \t\r\n";

// Every character that can be part of a name or a number; what it is exactly is the parser's to find out.
bool IsWord(wchar_t c) noexcept {
    constexpr std::wstring_view kOthers = L" \t\r\n()[].@,:/|+=!<>*$\"'";
    return c == L'.' || kOthers.find(c) == std::wstring_view::npos;
}

// Takes one declaration off the text.
SelectionNamespace TakeNamespace(std::wstring_view& rest) {
    const std::size_t equals = rest.find(L'=');
    if (equals == std::wstring_view::npos) throw Refused{XmlNotAllowed};
    const std::wstring_view name = rest.substr(0, rest.find_last_not_of(kSpace, equals - 1) + 1);
    rest.remove_prefix(equals + 1);
    rest.remove_prefix(std::min(rest.find_first_not_of(kSpace), rest.size()));
    if (!rest.starts_with(L'\'') && !rest.starts_with(L'"')) throw Refused{XmlNotAllowed};
    const std::size_t end = rest.find(rest.front(), 1);
    if (end == std::wstring_view::npos) throw Refused{XmlNotAllowed};
    std::wstring uri(rest.substr(1, end - 1));
    rest.remove_prefix(end + 1);
    if (!rest.empty() && kSpace.find(rest.front()) == std::wstring_view::npos) throw Refused{XmlNotAllowed};

    if (name == L"xmlns") return {std::wstring(), std::move(uri)};
    if (!name.starts_with(L"xmlns:") || uri.empty()) throw Refused{XmlNotAllowed};
    try {
        CheckQualifiedName(name);
    } catch (const Refused&) {
        throw Refused{XmlNotAllowed};
    }
    const Name declaration(name, {});
    return {std::wstring(declaration.DeclaredPrefix()), std::move(uri)};
}

}  // namespace

std::vector<SelectionNamespace> ParseSelectionNamespaces(std::wstring_view text) {
    std::vector<SelectionNamespace> namespaces;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size()));
        if (text.empty()) return namespaces;
        SelectionNamespace item = TakeNamespace(text);
        if (!item.first.empty()) namespaces.push_back(std::move(item));
    }
}

const std::wstring* FindUri(const std::vector<SelectionNamespace>& namespaces,
                            std::wstring_view prefix) noexcept {
    const auto item = std::find_if(namespaces.begin(), namespaces.end(),
                                   [prefix](const SelectionNamespace& each) { return each.first == prefix; });
    return item == namespaces.end() ? nullptr : &item->second;
}

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
