#pragma once

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// The methods of IXMLDOMCharacterData, counted in UTF-16 units. A negative number is E_INVALIDARG, an offset
// beyond the data too, but for SubstringData S_FALSE and null. A count that reaches beyond the end stands for
// the rest.
[[nodiscard]] HRESULT GetDataLength(const Node& node, long* pLength) noexcept;
[[nodiscard]] HRESULT SubstringData(const Node& node, long offset, long count, BSTR* pData) noexcept;
[[nodiscard]] HRESULT ReplaceData(Node& node, long offset, long count, BSTR data) noexcept;

}  // namespace devkit::msxml
