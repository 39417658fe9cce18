#pragma once

#include <string>
#include <string_view>

namespace devkit::msxml {

// What an XML declaration says; an empty text stands for what it leaves out.
struct XmlDeclaration {
    std::wstring version;
    std::wstring encoding;
    std::wstring standalone;
};

// Reads what stands between "<?xml" and "?>". Throws ComError with XmlBadDeclaration when it is not the
// version (1.0), then perhaps the encoding, then perhaps standalone.
[[nodiscard]] XmlDeclaration ParseXmlDeclaration(std::wstring_view data);

// The declaration's data in the one form in which this library writes it.
[[nodiscard]] std::wstring Format(const XmlDeclaration& declaration);

}  // namespace devkit::msxml
