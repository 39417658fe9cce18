#pragma once

#include <libxml/tree.h>

#include <memory>
#include <string_view>

namespace devkit::prntvpt {

struct XmlDocFree {
    void operator()(xmlDoc* pDocument) const noexcept { xmlFreeDoc(pDocument); }
};
using XmlDocument = std::unique_ptr<xmlDoc, XmlDocFree>;

// The most bytes that a ticket may have.
inline constexpr std::size_t MaxDocumentSize = 32U * 1024U * 1024U;

// Parses UTF-8 or UTF-16, with or without a byte order mark. Throws FormatError for what is not well formed,
// breaks the rules of namespaces, holds a document type declaration, states another encoding, or is too large
// or too deep. Nothing is fetched and no entity is expanded.
[[nodiscard]] XmlDocument ParseXml(std::string_view bytes);

}  // namespace devkit::prntvpt
