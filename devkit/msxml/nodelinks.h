#pragma once

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// The properties of IXMLDOMNode that lead from node to node. Each is the method of that name.

[[nodiscard]] HRESULT GetParentNode(const Node& node, IXMLDOMNode** ppParent) noexcept;
[[nodiscard]] HRESULT GetPreviousSibling(const Node& node, IXMLDOMNode** ppSibling) noexcept;
[[nodiscard]] HRESULT GetNextSibling(const Node& node, IXMLDOMNode** ppSibling) noexcept;
[[nodiscard]] HRESULT HasChildNodes(const Node& node, VARIANT_BOOL* pHas) noexcept;
[[nodiscard]] HRESULT GetChildNodes(Node& node, IXMLDOMNodeList** ppList) noexcept;
[[nodiscard]] HRESULT GetAttributes(Node& node, IXMLDOMNamedNodeMap** ppMap) noexcept;
[[nodiscard]] HRESULT GetOwnerDocument(const Node& node, IXMLDOMDocument** ppDocument) noexcept;

// S_FALSE and null: for links that no node of this library has.
[[nodiscard]] HRESULT ReturnNoNode(IXMLDOMNode** ppNode) noexcept;

}  // namespace devkit::msxml
