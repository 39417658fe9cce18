#pragma once

#include "platform/windows.h"

#include "devkit/msxml/tree/node.h"
#include "platform/msxml6.h"

namespace devkit::msxml {

// The object that stands for a node, the same one as long as the node exists.
[[nodiscard]] inline IXMLDOMNode* DomNodeOf(Node& node) noexcept {
    if (node.facade.pObject == nullptr) node.OwnerDocument().Present(node);
    return static_cast<IXMLDOMNode*>(node.facade.pObject);
}

// The identifier under which an object gives its Node, held once for the caller, if it is one of this
// library.
inline constexpr IID kIidOfNode = {
    0x6f1d6c5e, 0x2f0b, 0x4a9e, {0x9b, 0x0d, 0x51, 0x53, 0x0a, 0x8e, 0x37, 0xc4}};

// The node behind an interface pointer. Null for a null pointer and for an object that is not of this
// library.
[[nodiscard]] NodeRef NodeOf(IUnknown* pObject) noexcept;

// Gives a node to the caller of a COM method, through the interface of its kind: S_OK with a reference, or
// S_FALSE and null for none. Nothing for a caller who does not want it.
template <typename Interface>
[[nodiscard]] HRESULT ReturnNode(Node* pNode, Interface** ppOut) noexcept {
    if (ppOut == nullptr) return S_OK;
    *ppOut = nullptr;
    if (pNode == nullptr) return S_FALSE;
    *ppOut = static_cast<Interface*>(DomNodeOf(*pNode));
    pNode->Keep();
    return S_OK;
}

}  // namespace devkit::msxml
