#include "devkit/msxml/tree.h"

#include "devkit/msxml/document.h"

namespace devkit::msxml {

namespace {

// Only to reach the chain; every owner of attributes gives out the member itself.
NodeChain* MutableAttributes(const Node& node) noexcept { return const_cast<NodeChain*>(node.Attributes()); }

}  // namespace

NodeChain& Tree::ChainFor(Node& parent, const Node& node) noexcept {
    return node.Type() == NODE_ATTRIBUTE ? *MutableAttributes(parent) : parent.m_children;
}

void Tree::Attach(Node& parent, Node& node, Node* pBefore) noexcept {
    Document& oldDocument = node.OwnerDocument();
    const bool isKept = node.m_references != 0;
    if (isKept) parent.AddRef();
    if (&oldDocument != &parent.OwnerDocument()) Adopt(node, parent.OwnerDocument());

    NodeChain& chain = ChainFor(parent, node);
    node.m_pParent = &parent;
    node.m_pNext = pBefore;
    node.m_pPrevious = pBefore != nullptr ? pBefore->m_pPrevious : chain.pLast;
    (node.m_pPrevious != nullptr ? node.m_pPrevious->m_pNext : chain.pFirst) = &node;
    (pBefore != nullptr ? pBefore->m_pPrevious : chain.pLast) = &node;
    ++chain.count;
    ++chain.version;
    parent.OwnerDocument().NoteChange();
    if (isKept) static_cast<Node&>(oldDocument).Release();
}

void Tree::Detach(Node& node) noexcept {
    Node& parent = *node.m_pParent;
    Document& document = node.OwnerDocument();
    NodeChain& chain = ChainFor(parent, node);
    (node.m_pPrevious != nullptr ? node.m_pPrevious->m_pNext : chain.pFirst) = node.m_pNext;
    (node.m_pNext != nullptr ? node.m_pNext->m_pPrevious : chain.pLast) = node.m_pPrevious;
    node.m_pParent = node.m_pPrevious = node.m_pNext = nullptr;
    --chain.count;
    ++chain.version;
    document.NoteChange();
    if (node.m_references == 0) {
        Destroy(node);
    } else {
        static_cast<Node&>(document).AddRef();
        parent.Release();
    }
}

void Tree::DetachChildren(Node& parent) noexcept {
    while (parent.m_children.pLast != nullptr) Detach(*parent.m_children.pLast);
}

void Tree::Destroy(Node& root) noexcept {
    if (root.Type() != NODE_DOCUMENT) root.OwnerDocument().NoteChange();
    // The nodes still to be deleted, linked through m_pNext.
    Node* pPending = &root;
    root.m_pNext = nullptr;
    while (pPending != nullptr) {
        Node* const pNode = pPending;
        pPending = pNode->m_pNext;
        for (const NodeChain* pChain :
             {const_cast<const NodeChain*>(&pNode->m_children), pNode->Attributes()}) {
            if (pChain == nullptr || pChain->pLast == nullptr) continue;
            pChain->pLast->m_pNext = pPending;
            pPending = pChain->pFirst;
        }
        delete pNode;
    }
}

bool Tree::IsSelfOrDescendant(const Node& node, const Node& ancestor) noexcept {
    for (const Node* pNode = &node; pNode != nullptr; pNode = pNode->m_pParent) {
        if (pNode == &ancestor) return true;
    }
    return false;
}

Node* Tree::NextWithin(const Node& root, const Node& node) noexcept {
    if (node.m_children.pFirst != nullptr) return node.m_children.pFirst;
    const Node* pNode = &node;
    while (pNode != &root && pNode->m_pNext == nullptr) pNode = pNode->m_pParent;
    return pNode == &root ? nullptr : pNode->m_pNext;
}

void Tree::Adopt(Node& root, Document& document) noexcept {
    root.OwnerDocument().NoteChange();
    for (Node* pNode = &root; pNode != nullptr; pNode = NextWithin(root, *pNode)) {
        pNode->m_pDocument = &document;
        const NodeChain* const pAttributes = pNode->Attributes();
        if (pAttributes == nullptr) continue;
        for (Node* pAttribute = pAttributes->pFirst; pAttribute != nullptr;
             pAttribute = pAttribute->m_pNext) {
            pAttribute->m_pDocument = &document;
            for (Node* pText = pAttribute->m_children.pFirst; pText != nullptr; pText = pText->m_pNext) {
                pText->m_pDocument = &document;
            }
        }
    }
}

}  // namespace devkit::msxml
