#pragma once

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// cloneNode: a copy without a parent. An attribute is always copied with its value, an element with its
// attributes; what is below only for a deep copy. A document's copy is a document of its own with the same
// settings.
[[nodiscard]] HRESULT CloneNode(Node& node, VARIANT_BOOL deep, IXMLDOMNode** ppCopy) noexcept;

// xml: the node as markup, without the encoding in an XML declaration since the text has none.
[[nodiscard]] HRESULT GetXml(const Node& node, BSTR* pXml) noexcept;

// selectNodes and selectSingleNode: XPath 1.0 with the prefixes of SelectionNamespaces. E_FAIL for an
// expression that is not XPath, has a prefix that is not declared or gives no nodes but a value. No match: an
// empty list with S_OK, null with S_FALSE.
[[nodiscard]] HRESULT SelectNodes(Node& node, BSTR query, IXMLDOMNodeList** ppList) noexcept;
[[nodiscard]] HRESULT SelectSingleNode(Node& node, BSTR query, IXMLDOMNode** ppNode) noexcept;

}  // namespace devkit::msxml
