#pragma once

#include <string_view>

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// The kind that a VARIANT names by number or by nodeTypeString. Throws ComError with E_INVALIDARG for no such
// kind.
[[nodiscard]] DOMNodeType NodeTypeOf(const VARIANT& type);

// createNode. The name counts for elements, attributes, processing instructions and entity references, the
// URI for the first two; see ValidName for what is thrown. E_INVALIDARG for kinds that cannot be made so
// (documents, DTD parts).
[[nodiscard]] NodeRef MakeNamedNode(Document& document, DOMNodeType type, std::wstring_view name,
                                    std::wstring_view uri);

}  // namespace devkit::msxml
