#include "devkit/msxml/tree/xmldeclaration.h"

#include <algorithm>

#include "devkit/common/text.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml {

namespace {

constexpr std::wstring_view kSpace = L" \t\r\n";
constexpr std::wstring_view kLetters = L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::wstring_view kEncodingCharacters =
    L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";

void RequireSyntax(bool holds) {
    if (!holds) throw Refused{XmlBadDeclaration};
}

void SkipSpace(std::wstring_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(kSpace), rest.size()));
}

// Takes name="value" off the text; the empty text when another name stands there.
std::wstring TakeAttribute(std::wstring_view& rest, std::wstring_view name) {
    if (!rest.starts_with(name)) return {};
    rest.remove_prefix(name.size());
    SkipSpace(rest);
    RequireSyntax(rest.starts_with(L'='));
    rest.remove_prefix(1);
    SkipSpace(rest);
    RequireSyntax(rest.starts_with(L'"') || rest.starts_with(L'\''));
    const std::size_t end = rest.find(rest.front(), 1);
    RequireSyntax(end != std::wstring_view::npos && end > 1);
    std::wstring value(rest.substr(1, end - 1));
    rest.remove_prefix(end + 1);
    RequireSyntax(rest.empty() || kSpace.find(rest.front()) != std::wstring_view::npos);
    SkipSpace(rest);
    return value;
}

}  // namespace

XmlDeclaration ParseXmlDeclaration(std::wstring_view data) {
    std::wstring_view rest = common::Trimmed(data);
    XmlDeclaration declaration;
    for (const auto& [name, pItem] : kDeclarationItems) {
        declaration.*pItem = TakeAttribute(rest, name);
        CheckDeclarationItem(name, declaration.*pItem);
    }
    RequireSyntax(!declaration.version.empty() && rest.empty());
    return declaration;
}

void CheckDeclarationItem(std::wstring_view name, std::wstring_view value) {
    const auto* const pItem = std::find_if(kDeclarationItems.begin(), kDeclarationItems.end(),
                                           [name](const auto& item) { return item.first == name; });
    if (pItem == kDeclarationItems.end()) throw Refused{XmlNotAllowed};
    if (value.empty()) return;
    if (name == L"version") return RequireSyntax(value == L"1.0");
    if (name == L"standalone") return RequireSyntax(value == L"yes" || value == L"no");
    RequireSyntax(kLetters.find(value.front()) != std::wstring_view::npos);
    RequireSyntax(value.find_first_not_of(kEncodingCharacters) == std::wstring_view::npos);
}

std::wstring Format(const XmlDeclaration& declaration) {
    std::wstring data;
    for (const auto& [name, pItem] : kDeclarationItems) {
        const std::wstring& value = declaration.*pItem;
        if (value.empty()) continue;
        if (!data.empty()) data += L' ';
        data.append(name).append(L"=\"").append(value).append(L"\"");
    }
    return data;
}

}  // namespace devkit::msxml
