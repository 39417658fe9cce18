#pragma once

#include "devkit/msxml/tree/node.h"

namespace devkit::msxml {

// A copy without a parent, of the same document. An attribute is always copied with its value, an element
// with its attributes; what is below only for a deep copy. Not for documents. Throws std::bad_alloc.
[[nodiscard]] NodeRef Clone(const Node& node, bool isDeep);

// Appends copies of all nodes below one of the same kind, made for the target's document.
void CopyChildren(const Node& source, Node& target);

}  // namespace devkit::msxml
