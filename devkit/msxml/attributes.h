#pragma once

#include <string>
#include <string_view>

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// A new attribute without an element.
[[nodiscard]] NodeRef MakeAttribute(Document& document, SharedName pName, std::wstring value);

// The attribute of a qualified name, or of a local name in a namespace; null when there is none.
[[nodiscard]] Node* FindAttribute(const NodeChain& attributes, std::wstring_view qualified) noexcept;
[[nodiscard]] Node* FindAttribute(const NodeChain& attributes, std::wstring_view local,
                                  std::wstring_view uri) noexcept;

// Throws ComError: E_INVALIDARG when the attribute declares a prefix to mean another namespace than its
// element already uses it for; E_FAIL for an attribute of an XML declaration, which changes with its data.
void SetAttributeValue(Node& attribute, std::wstring value);

// Gives an attribute without an element to one, in the place of the attribute of the same name, which is
// returned; else last. Throws ComError: E_FAIL when the attribute has an element or the owner is none,
// E_INVALIDARG when it would give a prefix a second meaning on the element.
NodeRef PutAttribute(Node& element, Node& attribute);

}  // namespace devkit::msxml
