#pragma once

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// The methods of IXMLDOMNode that change the tree. Each is the method of that name; the out-parameters for
// nodes may be null. E_INVALIDARG for a null or foreign node and for a reference that is no child, E_FAIL for
// a node of a kind that cannot stand there, for a second root element and for a node that would come below
// itself. A node that has a parent, in this document or another of this library, is taken out of it first.

[[nodiscard]] HRESULT InsertBefore(Node& parent, IXMLDOMNode* pNew, const VARIANT& before,
                                   IXMLDOMNode** ppNew) noexcept;
[[nodiscard]] HRESULT AppendChild(Node& parent, IXMLDOMNode* pNew, IXMLDOMNode** ppNew) noexcept;
[[nodiscard]] HRESULT RemoveChild(Node& parent, IXMLDOMNode* pChild, IXMLDOMNode** ppChild) noexcept;
// A null new child removes the old one.
[[nodiscard]] HRESULT ReplaceChild(Node& parent, IXMLDOMNode* pNew, IXMLDOMNode* pOld,
                                   IXMLDOMNode** ppOld) noexcept;

}  // namespace devkit::msxml
