#pragma once

#include "platform/windows.h"

#include <string_view>

#include "devkit/msxml/com/values.h"
#include "devkit/msxml/tree/node.h"
#include "platform/msxml6.h"

namespace devkit::msxml {

// The methods of IXMLDOMNode that read a node or change what it says. Each is the method of that name.

[[nodiscard]] HRESULT GetNodeName(const Node& node, BSTR* pName) noexcept;
[[nodiscard]] HRESULT GetNodeType(const Node& node, DOMNodeType* pType) noexcept;
[[nodiscard]] HRESULT GetNodeTypeString(const Node& node, BSTR* pName) noexcept;
[[nodiscard]] HRESULT GetNamespaceUri(const Node& node, BSTR* pUri) noexcept;
[[nodiscard]] HRESULT GetPrefix(const Node& node, BSTR* pPrefix) noexcept;
[[nodiscard]] HRESULT GetBaseName(const Node& node, BSTR* pName) noexcept;

[[nodiscard]] HRESULT GetNodeValue(const Node& node, VARIANT* pValue) noexcept;
// Line ends become line feeds, except in attributes. E_FAIL for a node without a value and for an XML
// declaration, whose attributes can be changed instead.
[[nodiscard]] HRESULT PutNodeValue(Node& node, const VARIANT& value) noexcept;
[[nodiscard]] HRESULT PutData(Node& node, BSTR data) noexcept;
[[nodiscard]] HRESULT GetText(const Node& node, BSTR* pText) noexcept;
[[nodiscard]] HRESULT PutText(Node& node, BSTR text) noexcept;
[[nodiscard]] HRESULT GetNodeTypedValue(const Node& node, VARIANT* pValue) noexcept;
[[nodiscard]] HRESULT PutNodeTypedValue(Node& node, const VARIANT& value) noexcept;

[[nodiscard]] HRESULT GetParentNode(const Node& node, IXMLDOMNode** ppParent) noexcept;
[[nodiscard]] HRESULT GetPreviousSibling(const Node& node, IXMLDOMNode** ppSibling) noexcept;
[[nodiscard]] HRESULT GetNextSibling(const Node& node, IXMLDOMNode** ppSibling) noexcept;
[[nodiscard]] HRESULT GetFirstChild(Node& node, IXMLDOMNode** ppChild) noexcept;
[[nodiscard]] HRESULT GetLastChild(Node& node, IXMLDOMNode** ppChild) noexcept;
[[nodiscard]] HRESULT HasChildNodes(const Node& node, VARIANT_BOOL* pHas) noexcept;
[[nodiscard]] HRESULT GetChildNodes(Node& node, IXMLDOMNodeList** ppList) noexcept;
[[nodiscard]] HRESULT GetAttributes(Node& node, IXMLDOMNamedNodeMap** ppMap) noexcept;
[[nodiscard]] HRESULT GetOwnerDocument(const Node& node, IXMLDOMDocument** ppDocument) noexcept;
// The elements below a node whose qualified name it is ("*": all elements, "": all nodes), in document order.
[[nodiscard]] HRESULT GetElementsByTagName(const Node& node, BSTR name, IXMLDOMNodeList** ppList) noexcept;
// S_FALSE and null: for links that no node of this library has.
[[nodiscard]] HRESULT ReturnNoNode(IXMLDOMNode** ppNode) noexcept;

// Not for a document, whose copy is a document of its own.
[[nodiscard]] HRESULT CloneNode(Node& node, VARIANT_BOOL deep, IXMLDOMNode** ppCopy) noexcept;
[[nodiscard]] HRESULT GetXml(const Node& node, BSTR* pXml) noexcept;
// XPath 1.0 with the prefixes of SelectionNamespaces. E_FAIL for an expression that is not XPath, has a
// prefix that is not declared or gives no nodes but a value. No match: an empty list with S_OK, null with
// S_FALSE.
[[nodiscard]] HRESULT SelectNodes(Node& node, BSTR query, IXMLDOMNodeList** ppList) noexcept;
[[nodiscard]] HRESULT SelectSingleNode(Node& node, BSTR query, IXMLDOMNode** ppNode) noexcept;

// The nodeTypeString of a kind; empty for what is none.
[[nodiscard]] std::wstring_view TypeNameOf(Kind kind) noexcept;

}  // namespace devkit::msxml
