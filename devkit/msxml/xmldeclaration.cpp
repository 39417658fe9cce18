#include "devkit/msxml/xmldeclaration.h"

#include <algorithm>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/errorcodes.h"
#include "devkit/msxml/unicode.h"

namespace devkit::msxml {

namespace {

constexpr std::wstring_view space = L" \t\r\n";
constexpr std::wstring_view letters = L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::wstring_view encodingCharacters =
    L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";

void Require(bool holds) {
    if (!holds) throw ComError{Hresult(XmlBadDeclaration)};
}

void SkipSpace(std::wstring_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(space), rest.size()));
}

// Takes name="value" off the text; the empty text when another name stands there.
std::wstring TakeAttribute(std::wstring_view& rest, std::wstring_view name) {
    if (!rest.starts_with(name)) return {};
    rest.remove_prefix(name.size());
    SkipSpace(rest);
    Require(rest.starts_with(L'='));
    rest.remove_prefix(1);
    SkipSpace(rest);
    Require(rest.starts_with(L'"') || rest.starts_with(L'\''));
    const std::size_t end = rest.find(rest.front(), 1);
    Require(end != std::wstring_view::npos && end > 1);
    std::wstring value(rest.substr(1, end - 1));
    rest.remove_prefix(end + 1);
    Require(rest.empty() || space.find(rest.front()) != std::wstring_view::npos);
    SkipSpace(rest);
    return value;
}

}  // namespace

XmlDeclaration ParseXmlDeclaration(std::wstring_view data) {
    std::wstring_view rest = Trimmed(data);
    XmlDeclaration declaration;
    declaration.version = TakeAttribute(rest, L"version");
    Require(declaration.version == L"1.0");
    declaration.encoding = TakeAttribute(rest, L"encoding");
    if (!declaration.encoding.empty()) {
        Require(letters.find(declaration.encoding.front()) != std::wstring_view::npos);
        Require(declaration.encoding.find_first_not_of(encodingCharacters) == std::wstring::npos);
    }
    declaration.standalone = TakeAttribute(rest, L"standalone");
    Require(declaration.standalone.empty() || declaration.standalone == L"yes" ||
            declaration.standalone == L"no");
    Require(rest.empty());
    return declaration;
}

std::wstring Format(const XmlDeclaration& declaration) {
    std::wstring data = L"version=\"" + declaration.version + L"\"";
    if (!declaration.encoding.empty()) data += L" encoding=\"" + declaration.encoding + L"\"";
    if (!declaration.standalone.empty()) data += L" standalone=\"" + declaration.standalone + L"\"";
    return data;
}

}  // namespace devkit::msxml
