#pragma once

#include <string>

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// What an XML declaration is written with.
enum class DeclaredEncoding {
    Kept,    // for bytes, which are in that encoding
    Dropped  // for text, which has none
};

// A node with all below it as markup. Prefixes that are in use and not declared are declared on the elements
// that use them. Behind each node of a document stands a line break, unless the document preserves white
// space. Throws ComError with XmlBadCharData, XmlCommentSyntax or XmlInstructionSyntax for data that no
// markup can hold.
[[nodiscard]] std::wstring Serialise(const Node& node, DeclaredEncoding encoding);

}  // namespace devkit::msxml
