#include "devkit/msxml/node.h"

#include <utility>

#include "devkit/msxml/document.h"
#include "devkit/msxml/tree.h"

namespace devkit::msxml {

Node::Node(DOMNodeType type, Document& document, SharedName pName) noexcept
    : m_type(type), m_pDocument(&document), m_pName(std::move(pName)) {}

Node* Node::Keeper() const noexcept {
    if (m_pParent != nullptr) return m_pParent;
    return m_type == NODE_DOCUMENT ? nullptr : m_pDocument;
}

ULONG Node::AddRef() noexcept {
    for (Node* pNode = this; pNode != nullptr && pNode->m_references++ == 0; pNode = pNode->Keeper()) {
    }
    return m_references;
}

ULONG Node::Release() noexcept {
    const ULONG left = m_references - 1;
    for (Node* pNode = this; pNode != nullptr && --pNode->m_references == 0;) {
        Node* const pKeeper = pNode->Keeper();
        if (pNode->m_pParent == nullptr) Tree::Destroy(*pNode);
        pNode = pKeeper;
    }
    return left;
}

void Node::SetData(std::wstring data) {
    m_data = std::move(data);
    m_pDocument->NoteChange();
}

NodeRef NodeOf(IUnknown* object) noexcept {
    void* pNode = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(IID_Node, &pNode))) return nullptr;
    return NodeRef::Adopt(static_cast<Node*>(pNode));
}

}  // namespace devkit::msxml
