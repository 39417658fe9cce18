#pragma once

#include <string>

#include "devkit/msxml/tree/node.h"

namespace devkit::msxml {

// What markup is written for.
enum class Output {
    // Bytes in the encoding of the XML declaration.
    Saved,
    // The xml property: text, whose declaration names no encoding but UTF-16. Line feeds in text are written
    // as
    // CR LF, and where the parser dropped white space stand a line break and a tab for each level.
    Shown
};

// A node with all below it as markup. Prefixes that are in use and not declared are declared on the elements
// that use them. Behind each node of a document stands a line break, unless the document preserves white
// space. Refused with XmlBadCharData, XmlCommentSyntax or XmlInstructionSyntax for data that no markup can
// hold.
[[nodiscard]] std::wstring Serialise(const Node& node, Output output);

// The document in the encoding of its XML declaration, without one in UTF-8; none for an empty document.
// Refused as by Serialise and by Encode.
[[nodiscard]] std::string SavedBytes(const Document& document);

}  // namespace devkit::msxml
