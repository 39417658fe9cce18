#pragma once

#include "devkit/msxml/tree/node.h"

namespace devkit::msxml {

// Changes of the tree that keep to the DOM's rules. Refused with XmlNotAllowed for a node of a kind that
// cannot stand there, for a second root element, for a node that would come below itself and for one that
// would displace an XML declaration. A node that has a parent, in this document or another, is taken out of
// it first; in the place of a fragment come its children.

// Before another child, or last when there is none.
void InsertChild(Node& parent, Node& node, Node* pBefore);
void ReplaceChild(Node& parent, Node& node, Node& old);

}  // namespace devkit::msxml
