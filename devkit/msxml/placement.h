#pragma once

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// Whether a node, or each child of a fragment, may stand in the parent before another child (null: last),
// when pReplaced (null: none) is about to go. Throws ComError with E_FAIL when it may not.
void CheckPlacement(const Node& parent, const Node& node, const Node* pBefore, const Node* pReplaced);

}  // namespace devkit::msxml
