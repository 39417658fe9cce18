#pragma once

#include <libxml/xmlmemory.h>
#include <libxml/xmlstring.h>

#include <memory>
#include <string>
#include <string_view>

namespace devkit::package {

// Text of libxml2's that its caller must release.
struct XmlFree {
    void operator()(xmlChar* pText) const noexcept { xmlFree(pText); }
};
using XmlTextPtr = std::unique_ptr<xmlChar, XmlFree>;

[[nodiscard]] inline const xmlChar* XmlText(const char* text) noexcept {
    return reinterpret_cast<const xmlChar*>(text);
}

// Null gives empty text.
[[nodiscard]] inline std::string TextOf(const xmlChar* pText) {
    return pText == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(pText));
}

// The text as the value of an attribute in double quotes.
[[nodiscard]] std::string EscapedAttribute(std::string_view text);

}  // namespace devkit::package
