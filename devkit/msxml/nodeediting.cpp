#include "devkit/msxml/nodeediting.h"

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/placement.h"
#include "devkit/msxml/tree.h"

namespace devkit::msxml {

namespace {

void Move(Node& parent, Node& node, Node* pBefore) noexcept {
    const NodeRef keep(&node);
    if (node.Parent() != nullptr) Tree::Detach(node);
    Tree::Attach(parent, node, pBefore);
}

// Puts a node, or the children of a fragment, before another child.
void Place(Node& parent, Node& node, Node* pBefore) noexcept {
    if (node.Type() != NODE_DOCUMENT_FRAGMENT) return Move(parent, node, pBefore);
    while (node.Children().pFirst != nullptr) Move(parent, *node.Children().pFirst, pBefore);
}

// The child that a VARIANT names; null for "behind the last". Throws ComError for what is no child.
NodeRef ReferenceChild(const Node& parent, const VARIANT& before) {
    if (before.vt == VT_NULL || before.vt == VT_EMPTY) return nullptr;
    const bool isObject = before.vt == VT_UNKNOWN || before.vt == VT_DISPATCH;
    if (!isObject) throw ComError{E_FAIL};
    if (before.punkVal == nullptr) return nullptr;
    NodeRef pReference = NodeOf(before.punkVal);
    if (!pReference || pReference->Parent() != &parent || pReference->Type() == NODE_ATTRIBUTE) {
        throw ComError{E_INVALIDARG};
    }
    return pReference;
}

HRESULT Insert(Node& parent, IXMLDOMNode* pNew, Node* pBefore, IXMLDOMNode** ppNew) {
    const NodeRef pNode = NodeOf(pNew);
    if (!pNode) return E_INVALIDARG;
    if (pNode.Get() != pBefore) {
        CheckPlacement(parent, *pNode.Get(), pBefore, nullptr);
        Place(parent, *pNode.Get(), pBefore);
    }
    return ppNew == nullptr ? S_OK : Return(pNode.Get(), ppNew);
}

}  // namespace

HRESULT InsertBefore(Node& parent, IXMLDOMNode* pNew, const VARIANT& before, IXMLDOMNode** ppNew) noexcept {
    if (ppNew != nullptr) *ppNew = nullptr;
    const NodeRef keep(&parent);
    return Guarded([&] { return Insert(parent, pNew, ReferenceChild(parent, before).Get(), ppNew); });
}

HRESULT AppendChild(Node& parent, IXMLDOMNode* pNew, IXMLDOMNode** ppNew) noexcept {
    if (ppNew != nullptr) *ppNew = nullptr;
    const NodeRef keep(&parent);
    return Guarded([&] { return Insert(parent, pNew, nullptr, ppNew); });
}

HRESULT RemoveChild(Node& parent, IXMLDOMNode* pChild, IXMLDOMNode** ppChild) noexcept {
    if (ppChild != nullptr) *ppChild = nullptr;
    const NodeRef keep(&parent);
    const NodeRef pNode = NodeOf(pChild);
    if (!pNode || pNode->Parent() != &parent || pNode->Type() == NODE_ATTRIBUTE) return E_INVALIDARG;
    Tree::Detach(*pNode.Get());
    return ppChild == nullptr ? S_OK : Return(pNode.Get(), ppChild);
}

HRESULT ReplaceChild(Node& parent, IXMLDOMNode* pNew, IXMLDOMNode* pOld, IXMLDOMNode** ppOld) noexcept {
    if (pNew == nullptr) return RemoveChild(parent, pOld, ppOld);
    if (ppOld != nullptr) *ppOld = nullptr;
    const NodeRef keep(&parent);
    const NodeRef pNode = NodeOf(pNew);
    const NodeRef pReplaced = NodeOf(pOld);
    if (!pNode || !pReplaced || pReplaced->Parent() != &parent || pReplaced->Type() == NODE_ATTRIBUTE) {
        return E_INVALIDARG;
    }
    return Guarded([&] {
        if (pNode.Get() != pReplaced.Get()) {
            CheckPlacement(parent, *pNode.Get(), pReplaced.Get(), pReplaced.Get());
            Place(parent, *pNode.Get(), pReplaced.Get());
            Tree::Detach(*pReplaced.Get());
        }
        return ppOld == nullptr ? S_OK : Return(pReplaced.Get(), ppOld);
    });
}

}  // namespace devkit::msxml
