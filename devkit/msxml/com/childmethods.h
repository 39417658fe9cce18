#pragma once

#include "platform/windows.h"

#include "devkit/msxml/tree/node.h"
#include "platform/msxml6.h"

namespace devkit::msxml {

// The methods of IXMLDOMNode that change the tree. Each is the method of that name; the out-parameters for
// nodes may be null. E_INVALIDARG for a null or foreign node and for a reference that is no child, E_FAIL for
// what the tree's rules forbid.

[[nodiscard]] HRESULT InsertBefore(Node& parent, IXMLDOMNode* pNew, const VARIANT& before,
                                   IXMLDOMNode** ppNew) noexcept;
[[nodiscard]] HRESULT AppendChild(Node& parent, IXMLDOMNode* pNew, IXMLDOMNode** ppNew) noexcept;
[[nodiscard]] HRESULT RemoveChild(Node& parent, IXMLDOMNode* pChild, IXMLDOMNode** ppChild) noexcept;
[[nodiscard]] HRESULT ReplaceChild(Node& parent, IXMLDOMNode* pNew, IXMLDOMNode* pOld,
                                   IXMLDOMNode** ppOld) noexcept;

}  // namespace devkit::msxml
