#pragma once

#include "devkit/msxml/comtext.h"
#include "devkit/msxml/node.h"

namespace devkit::msxml {

// The properties of IXMLDOMNode that tell what a node is and what it holds. Each is the method of that name.

[[nodiscard]] HRESULT GetNodeName(const Node& node, BSTR* pName) noexcept;
[[nodiscard]] HRESULT GetNodeType(const Node& node, DOMNodeType* pType) noexcept;
[[nodiscard]] HRESULT GetNodeTypeString(const Node& node, BSTR* pName) noexcept;
[[nodiscard]] HRESULT GetNamespaceUri(const Node& node, BSTR* pUri) noexcept;
[[nodiscard]] HRESULT GetPrefix(const Node& node, BSTR* pPrefix) noexcept;
[[nodiscard]] HRESULT GetBaseName(const Node& node, BSTR* pName) noexcept;

[[nodiscard]] HRESULT GetNodeValue(const Node& node, VARIANT* pValue) noexcept;
[[nodiscard]] HRESULT PutNodeValue(Node& node, const VARIANT& value) noexcept;
[[nodiscard]] HRESULT GetText(const Node& node, BSTR* pText) noexcept;
[[nodiscard]] HRESULT PutText(Node& node, BSTR text) noexcept;
[[nodiscard]] HRESULT GetNodeTypedValue(const Node& node, VARIANT* pValue) noexcept;
[[nodiscard]] HRESULT PutNodeTypedValue(Node& node, const VARIANT& value) noexcept;

[[nodiscard]] HRESULT ReturnTrue(VARIANT_BOOL* pValue) noexcept;

}  // namespace devkit::msxml
