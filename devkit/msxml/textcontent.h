#pragma once

#include <string>

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// All text below a node as it stands: of its text nodes, CDATA sections and entity references, in document
// order. For a node with data, the data.
[[nodiscard]] std::wstring RawText(const Node& node);

// What the text property gives: RawText, for an element or a document without the white space at both ends
// unless white space is preserved there (preserveWhiteSpace, or the xml:space of the node or of one above
// it).
[[nodiscard]] std::wstring TextContent(const Node& node);

// Replaces all children by one text node, or by none for an empty text.
void SetTextContent(Node& node, std::wstring text);

// Whether xml:space="preserve" is in force at the node, or the document preserves white space.
[[nodiscard]] bool PreservesWhiteSpace(const Node& node);

}  // namespace devkit::msxml
