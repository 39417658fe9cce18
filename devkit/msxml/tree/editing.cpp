#include "devkit/msxml/tree/editing.h"

#include "devkit/msxml/tree/data.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml {

namespace {

bool IsContent(Kind type) noexcept {
    switch (type) {
        case Kind::Element:
        case Kind::Text:
        case Kind::CdataSection:
        case Kind::EntityReference:
        case Kind::Instruction:
        case Kind::Comment:
            return true;
        default:
            return false;
    }
}

bool CanHold(Kind parent, Kind child) noexcept {
    switch (parent) {
        case Kind::Element:
        case Kind::Fragment:
            return IsContent(child);
        case Kind::Attribute:
            return child == Kind::Text || child == Kind::EntityReference;
        case Kind::Document:
            return child == Kind::Element || child == Kind::Instruction || child == Kind::Comment;
        default:
            return false;
    }
}

std::size_t CountElements(const Node& parent, const Node* pIgnored, const Node* pAlsoIgnored) noexcept {
    std::size_t count = 0;
    for (const Node* pNode = parent.Children().pFirst; pNode != nullptr; pNode = pNode->Next()) {
        if (pNode->Is(Kind::Element) && pNode != pIgnored && pNode != pAlsoIgnored) ++count;
    }
    return count;
}

// A document's declaration stands first, and nothing else may come before it.
void CheckDeclarationStaysFirst(const Node& document, const Node& node, const Node* pBefore,
                                const Node* pReplaced) {
    const Node* pFirst = document.Children().pFirst;
    if (pFirst == &node) pFirst = pFirst->Next();
    const bool comesFirst = pBefore == pFirst || (pFirst == nullptr && pBefore == nullptr);
    if (node.IsXmlDeclaration()) {
        const bool displacesAnother = pFirst != nullptr && pFirst->IsXmlDeclaration() && pFirst != pReplaced;
        if (!comesFirst || displacesAnother) throw Refused{XmlNotAllowed};
    } else if (pBefore != nullptr && pBefore != pReplaced && pBefore->IsXmlDeclaration()) {
        throw Refused{XmlNotAllowed};
    }
}

// Whether a node, or each child of a fragment, may stand in the parent before another child (null: last),
// when pReplaced (null: none) is about to go.
void CheckPlacement(const Node& parent, const Node& node, const Node* pBefore, const Node* pReplaced) {
    // Building a tree from above must not cost its depth with each node: one without children is above
    // nothing.
    const bool mayBeAbove = &parent == &node || node.Children().pFirst != nullptr;
    if (mayBeAbove && parent.IsSelfOrBelow(node)) throw Refused{XmlNotAllowed};
    const bool isFragment = node.Is(Kind::Fragment);
    const Node* const pFirst = isFragment ? node.Children().pFirst : &node;
    std::size_t elements = 0;
    for (const Node* pNode = pFirst; pNode != nullptr; pNode = isFragment ? pNode->Next() : nullptr) {
        if (!CanHold(parent.What(), pNode->What())) throw Refused{XmlNotAllowed};
        if (pNode->Is(Kind::Element)) ++elements;
        if (parent.Is(Kind::Document)) {
            CheckDeclarationStaysFirst(parent, *pNode, pBefore, pReplaced);
        } else if (pNode->IsXmlDeclaration()) {
            throw Refused{XmlNotAllowed};
        }
    }
    if (!parent.Is(Kind::Document)) return;
    if (elements > 1 || (elements == 1 && CountElements(parent, &node, pReplaced) != 0))
        throw Refused{XmlNotAllowed};
}

void Move(Node& parent, Node& node, Node* pBefore) noexcept {
    const NodeRef keep(&node);
    if (node.Parent() != nullptr) node.Detach();
    parent.Attach(node, pBefore);
}

// Puts a node, or the children of a fragment, before another child.
void Place(Node& parent, Node& node, Node* pBefore) noexcept {
    if (!node.Is(Kind::Fragment)) return Move(parent, node, pBefore);
    while (node.Children().pFirst != nullptr) Move(parent, *node.Children().pFirst, pBefore);
}

}  // namespace

void InsertChild(Node& parent, Node& node, Node* pBefore) {
    if (&node == pBefore) return;
    ExposeValue(parent);
    CheckPlacement(parent, node, pBefore, nullptr);
    Place(parent, node, pBefore);
}

void ReplaceChild(Node& parent, Node& node, Node& old) {
    if (&node == &old) return;
    CheckPlacement(parent, node, &old, &old);
    Place(parent, node, &old);
    old.Detach();
}

}  // namespace devkit::msxml
