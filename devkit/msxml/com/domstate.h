#pragma once

#include "devkit/msxml/com/documentsettings.h"
#include "devkit/msxml/text/parsefailure.h"
#include "devkit/msxml/tree/node.h"
#include "devkit/msxml/xpath/selection.h"

namespace devkit::msxml {

// A document with what its users set and ask for beside the tree.
class DomState : public Document {
  public:
    DocumentSettings settings;
    ParseFailure failure;  // of the last load
    Selector selector;
};

// What a node's document has beside its tree. Every document of this library is a DomState.
[[nodiscard]] inline DomState& StateOf(const Node& node) noexcept {
    return static_cast<DomState&>(node.OwnerDocument());
}

}  // namespace devkit::msxml
