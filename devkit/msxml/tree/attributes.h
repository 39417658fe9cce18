#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "devkit/msxml/tree/node.h"

namespace devkit::msxml {

// The attribute of a qualified name, or of a local name in a namespace; null when there is none.
[[nodiscard]] Node* FindAttribute(const Node& owner, std::wstring_view qualified) noexcept;
[[nodiscard]] Node* FindAttribute(const Node& owner, std::wstring_view local, std::wstring_view uri) noexcept;

// On one element each prefix has one meaning: that of its own name, of its attributes' names and of its
// declarations. What would break that is Refused with XmlPrefixConflict by the next two. Two cases pass: an
// empty value of a declaration, which says nothing yet, and a default namespace on an element that has none
// itself. An XML declaration takes its three attributes alone, with values that it can have: XmlNotAllowed,
// XmlBadDeclaration.

void SetAttributeValue(Node& attribute, std::wstring value);
// Gives an attribute without an owner to one, in the place of the attribute of the same name, which is
// returned; else last. Refused with XmlNotAllowed when it has an owner or that one can have no attributes.
NodeRef PutAttribute(Node& owner, Node& attribute);

void RemoveAttribute(Node& attribute);

// A new XML declaration without a parent. Refused with XmlBadDeclaration for data that is not one's.
[[nodiscard]] NodeRef MakeDeclaration(Document& document, std::wstring_view data);

// Whether a namespace declaration has force: not when its value is empty although its prefix, or the
// element's own name, needs one.
[[nodiscard]] bool IsInForce(const Node& element, const Name& declaration, std::wstring_view value) noexcept;

// The namespace that a prefix stands for at a node, by the declarations and the names of the node and those
// above it. The prefix may be empty; "xml" and "xmlns" are known everywhere.
[[nodiscard]] std::optional<std::wstring> FindNamespace(const Node& node, std::wstring_view prefix);

// Whether xml:space="preserve" is in force at the node, or the document preserves white space.
[[nodiscard]] bool PreservesWhiteSpace(const Node& node);

// What the text property gives: RawText, for an element or a document without the white space at both ends
// unless white space is preserved there.
[[nodiscard]] std::wstring TextContent(const Node& node);

}  // namespace devkit::msxml
