#include "devkit/msxml/placement.h"

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/tree.h"

namespace devkit::msxml {

namespace {

bool IsContent(DOMNodeType type) noexcept {
    switch (type) {
        case NODE_ELEMENT:
        case NODE_TEXT:
        case NODE_CDATA_SECTION:
        case NODE_ENTITY_REFERENCE:
        case NODE_PROCESSING_INSTRUCTION:
        case NODE_COMMENT:
            return true;
        default:
            return false;
    }
}

bool CanHold(DOMNodeType parent, DOMNodeType child) noexcept {
    switch (parent) {
        case NODE_ELEMENT:
        case NODE_DOCUMENT_FRAGMENT:
            return IsContent(child);
        case NODE_ATTRIBUTE:
            return child == NODE_TEXT || child == NODE_ENTITY_REFERENCE;
        case NODE_DOCUMENT:
            return child == NODE_ELEMENT || child == NODE_PROCESSING_INSTRUCTION || child == NODE_COMMENT;
        default:
            return false;
    }
}

std::size_t CountElements(const Node& parent, const Node* pIgnored, const Node* pAlsoIgnored) noexcept {
    std::size_t count = 0;
    for (const Node* pNode = parent.Children().pFirst; pNode != nullptr; pNode = pNode->Next()) {
        if (pNode->Type() == NODE_ELEMENT && pNode != pIgnored && pNode != pAlsoIgnored) ++count;
    }
    return count;
}

// A document's declaration stands first, and nothing else may come before it.
void CheckDeclarationStaysFirst(const Node& document, const Node& node, const Node* pBefore,
                                const Node* pReplaced) {
    const Node* pFirst = document.Children().pFirst;
    if (pFirst == &node) pFirst = pFirst->Next();
    const bool comesFirst = pBefore == pFirst || (pFirst == nullptr && pBefore == nullptr);
    if (IsXmlDeclaration(node)) {
        const bool displacesAnother = pFirst != nullptr && IsXmlDeclaration(*pFirst) && pFirst != pReplaced;
        if (!comesFirst || displacesAnother) throw ComError{E_FAIL};
    } else if (pBefore != nullptr && pBefore != pReplaced && IsXmlDeclaration(*pBefore)) {
        throw ComError{E_FAIL};
    }
}

}  // namespace

void CheckPlacement(const Node& parent, const Node& node, const Node* pBefore, const Node* pReplaced) {
    // Building a tree from above must not cost its depth with each node: one without children is above
    // nothing.
    const bool mayBeAbove = &parent == &node || node.Children().pFirst != nullptr;
    if (mayBeAbove && Tree::IsSelfOrDescendant(parent, node)) throw ComError{E_FAIL};
    const bool isFragment = node.Type() == NODE_DOCUMENT_FRAGMENT;
    const Node* const pFirst = isFragment ? node.Children().pFirst : &node;
    std::size_t elements = 0;
    for (const Node* pNode = pFirst; pNode != nullptr; pNode = isFragment ? pNode->Next() : nullptr) {
        if (!CanHold(parent.Type(), pNode->Type())) throw ComError{E_FAIL};
        if (pNode->Type() == NODE_ELEMENT) ++elements;
        if (parent.Type() == NODE_DOCUMENT) {
            CheckDeclarationStaysFirst(parent, *pNode, pBefore, pReplaced);
        } else if (IsXmlDeclaration(*pNode)) {
            throw ComError{E_FAIL};
        }
    }
    if (parent.Type() != NODE_DOCUMENT) return;
    if (elements > 1 || (elements == 1 && CountElements(parent, &node, pReplaced) != 0))
        throw ComError{E_FAIL};
}

}  // namespace devkit::msxml
