#pragma once

#include <string_view>
#include <vector>

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// The nodes that an XPath 1.0 expression selects from a node, in document order. Namespace declarations are
// no attributes to XPath, and its namespace axis is empty. Throws ComError with E_FAIL, see SelectNodes.
[[nodiscard]] std::vector<NodeRef> Select(Node& node, std::wstring_view expression);

}  // namespace devkit::msxml
