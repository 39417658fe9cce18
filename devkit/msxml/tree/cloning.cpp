#include "devkit/msxml/tree/cloning.h"

#include <utility>

#include "devkit/msxml/tree/data.h"

namespace devkit::msxml {

namespace {

// The node with its attributes, for the document that is to own it.
NodeRef CopyOne(const Node& node, Document& document) {
    const bool isValue = node.Is(Kind::Attribute);
    NodeRef pCopy = MakeNode(node.What(), document, node.GetName(), isValue ? RawText(node) : node.Data());
    pCopy->hasSpaceBefore = node.hasSpaceBefore;
    for (const Node* pNode = node.Attributes().pFirst; pNode != nullptr; pNode = pNode->Next()) {
        pCopy->Attach(*MakeNode(Kind::Attribute, document, pNode->GetName(), RawText(*pNode)), nullptr);
    }
    return pCopy;
}

}  // namespace

NodeRef Clone(const Node& node, bool isDeep) {
    NodeRef pCopy = CopyOne(node, node.OwnerDocument());
    if (isDeep && !node.Is(Kind::Attribute)) CopyChildren(node, *pCopy);
    return pCopy;
}

void CopyChildren(const Node& source, Node& target) {
    // Follows the original in document order with the copy of the last node at hand. It is held, so that
    // keeping a new node below it does not go up the whole tree.
    target.hasSpaceAtEnd = source.hasSpaceAtEnd;
    const Node* pNode = &source;
    NodeRef pCopy(&target);
    while (const Node* const pNext = pNode->NextWithin(source)) {
        for (const Node* pOpen = pNode; pOpen != pNext->Parent(); pOpen = pOpen->Parent()) {
            pCopy = NodeRef(pCopy->Parent());
        }
        NodeRef pChild = CopyOne(*pNext, target.OwnerDocument());
        pChild->hasSpaceAtEnd = pNext->hasSpaceAtEnd;
        pCopy->Attach(*pChild, nullptr);
        pNode = pNext;
        pCopy = std::move(pChild);
    }
}

}  // namespace devkit::msxml
