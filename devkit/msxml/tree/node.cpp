#include "devkit/msxml/tree/node.h"

#include <atomic>
#include <utility>

namespace devkit::msxml {

namespace {

std::atomic<long> g_livingNodes = 0;

}  // namespace

// The document's address is kept, not its content, which may not be made yet.
Node::Node(Kind kind, Document& document, SharedName pName) noexcept
    : m_kind(kind), m_pDocument(&document), m_pName(std::move(pName)) {
    ++g_livingNodes;
}

Node::~Node() { --g_livingNodes; }

long Node::CountLiving() noexcept { return g_livingNodes; }

Node* Node::Keeper() const noexcept {
    if (m_pParent != nullptr) return m_pParent;
    return m_kind == Kind::Document ? nullptr : m_pDocument;
}

unsigned Node::Keep() noexcept {
    for (Node* pNode = this; pNode != nullptr && pNode->m_keepers++ == 0; pNode = pNode->Keeper()) {
    }
    return m_keepers;
}

unsigned Node::Drop() noexcept {
    const unsigned left = m_keepers - 1;
    for (Node* pNode = this; pNode != nullptr && --pNode->m_keepers == 0;) {
        Node* const pKeeper = pNode->Keeper();
        if (pNode->m_pParent == nullptr) Destroy(*pNode);
        pNode = pKeeper;
    }
    return left;
}

void Node::SetData(std::wstring data) noexcept {
    m_data = std::move(data);
    m_pDocument->NoteChange();
}

bool Node::HasAttributes() const noexcept { return m_kind == Kind::Element || IsXmlDeclaration(); }

bool Node::IsXmlDeclaration() const noexcept {
    return m_kind == Kind::Instruction && m_pName->Qualified() == L"xml";
}

NodeChain& Node::ChainFor(const Node& node) noexcept {
    return node.m_kind == Kind::Attribute ? m_attributes : m_children;
}

void Node::Attach(Node& node, Node* pBefore) noexcept {
    Document& oldDocument = node.OwnerDocument();
    const bool isKept = node.m_keepers != 0;
    if (isKept) Keep();
    if (&oldDocument != m_pDocument) node.Adopt(*m_pDocument);
    NodeChain& chain = ChainFor(node);
    node.m_pParent = this;
    node.m_pNext = pBefore;
    node.m_pPrevious = pBefore != nullptr ? pBefore->m_pPrevious : chain.pLast;
    (node.m_pPrevious != nullptr ? node.m_pPrevious->m_pNext : chain.pFirst) = &node;
    (pBefore != nullptr ? pBefore->m_pPrevious : chain.pLast) = &node;
    ++chain.count;
    ++chain.version;
    m_pDocument->NoteChange();
    if (isKept) oldDocument.Drop();
}

void Node::Detach() noexcept {
    if (m_pParent == nullptr) return;
    Node& parent = *m_pParent;
    NodeChain& chain = parent.ChainFor(*this);
    (m_pPrevious != nullptr ? m_pPrevious->m_pNext : chain.pFirst) = m_pNext;
    (m_pNext != nullptr ? m_pNext->m_pPrevious : chain.pLast) = m_pPrevious;
    m_pParent = m_pPrevious = m_pNext = nullptr;
    --chain.count;
    ++chain.version;
    m_pDocument->NoteChange();
    if (m_keepers == 0) {
        Destroy(*this);
    } else {
        m_pDocument->Keep();
        parent.Drop();
    }
}

void Node::DetachChildren() noexcept {
    for (Node* pChild = m_children.pLast; pChild != nullptr;) {
        Node& last = *std::exchange(pChild, pChild->m_pPrevious);
        last.Detach();
    }
}

void Node::Destroy(Node& root) noexcept {
    if (root.m_kind != Kind::Document) root.m_pDocument->NoteChange();
    // The nodes still to be deleted, linked through m_pNext.
    Node* pPending = &root;
    root.m_pNext = nullptr;
    while (pPending != nullptr) {
        Node* const pNode = pPending;
        pPending = pNode->m_pNext;
        for (const NodeChain* pChain : {&pNode->m_children, &pNode->m_attributes}) {
            if (pChain->pLast == nullptr) continue;
            pChain->pLast->m_pNext = pPending;
            pPending = pChain->pFirst;
        }
        if (pNode->m_kind == Kind::Document) {
            delete static_cast<Document*>(pNode);
        } else {
            delete pNode;
        }
    }
}

bool Node::IsSelfOrBelow(const Node& ancestor) const noexcept {
    for (const Node* pNode = this; pNode != nullptr; pNode = pNode->m_pParent) {
        if (pNode == &ancestor) return true;
    }
    return false;
}

Node* Node::NextWithin(const Node& root) const noexcept {
    if (m_children.pFirst != nullptr) return m_children.pFirst;
    const Node* pNode = this;
    while (pNode != &root && pNode->m_pNext == nullptr) pNode = pNode->m_pParent;
    return pNode == &root ? nullptr : pNode->m_pNext;
}

void Node::Adopt(Document& document) noexcept {
    m_pDocument->NoteChange();
    for (Node* pNode = this; pNode != nullptr; pNode = pNode->NextWithin(*this)) {
        pNode->m_pDocument = &document;
        for (Node* pAttribute = pNode->m_attributes.pFirst; pAttribute != nullptr;
             pAttribute = pAttribute->m_pNext) {
            pAttribute->m_pDocument = &document;
            for (Node* pText = pAttribute->m_children.pFirst; pText != nullptr; pText = pText->m_pNext) {
                pText->m_pDocument = &document;
            }
        }
    }
}

Node* Document::RootElement() const noexcept {
    Node* pNode = Children().pFirst;
    while (pNode != nullptr && !pNode->Is(Kind::Element)) pNode = pNode->Next();
    return pNode;
}

Node* Document::Declaration() const noexcept {
    Node* const pFirst = Children().pFirst;
    return pFirst != nullptr && pFirst->IsXmlDeclaration() ? pFirst : nullptr;
}

}  // namespace devkit::msxml
