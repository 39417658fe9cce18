#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace devkit::msxml {

// What an XML declaration says; an empty text stands for what it leaves out.
struct XmlDeclaration {
    std::wstring version;
    std::wstring encoding;
    std::wstring standalone;
};

// Its items by name, in their order.
inline constexpr std::array kDeclarationItems = {
    std::pair<std::wstring_view, std::wstring XmlDeclaration::*>{L"version", &XmlDeclaration::version},
    std::pair<std::wstring_view, std::wstring XmlDeclaration::*>{L"encoding", &XmlDeclaration::encoding},
    std::pair<std::wstring_view, std::wstring XmlDeclaration::*>{L"standalone", &XmlDeclaration::standalone},
};

// Reads what stands between "<?xml" and "?>". Refused with XmlBadDeclaration when it is not the version
// (1.0), then perhaps the encoding, then perhaps standalone.
[[nodiscard]] XmlDeclaration ParseXmlDeclaration(std::wstring_view data);

// Refused with XmlNotAllowed for what is no item's name, XmlBadDeclaration for a value that the item cannot
// have. An empty value is none.
void CheckDeclarationItem(std::wstring_view name, std::wstring_view value);

// The declaration's data in the one form in which this library writes it.
[[nodiscard]] std::wstring Format(const XmlDeclaration& declaration);

}  // namespace devkit::msxml
