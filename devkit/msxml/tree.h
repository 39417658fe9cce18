#pragma once

#include <string_view>

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// Changes of the links between nodes. An attribute goes to the attributes of its parent, any other node to
// the children. What may stand where is the caller's to know.
class Tree {
  public:
    // Puts a node without a parent before another child of the parent, or last when there is none. The node
    // moves to the parent's document.
    static void Attach(Node& parent, Node& node, Node* pBefore) noexcept;
    // Takes a node out of its parent. The caller holds a reference, else the node is destroyed.
    static void Detach(Node& node) noexcept;
    // Detaches all children, not the attributes.
    static void DetachChildren(Node& parent) noexcept;
    // Destroys a tree that nothing keeps.
    static void Destroy(Node& root) noexcept;

    [[nodiscard]] static bool IsSelfOrDescendant(const Node& node, const Node& ancestor) noexcept;

    // The node that follows in document order within the tree of the root, attributes left out; null behind
    // the last.
    [[nodiscard]] static Node* NextWithin(const Node& root, const Node& node) noexcept;

  private:
    [[nodiscard]] static NodeChain& ChainFor(Node& parent, const Node& node) noexcept;
    static void Adopt(Node& root, Document& document) noexcept;
};

}  // namespace devkit::msxml
