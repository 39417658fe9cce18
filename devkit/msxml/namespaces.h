#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// On one element each prefix has one meaning: that of its own name, of its attributes' names and of its
// declarations. Throws ComError with E_INVALIDARG when the attribute, with this value, would break that. Two
// cases pass: an empty value of a declaration, which says nothing yet, and a default namespace on an element
// that has none itself.
void CheckPrefixes(const Node& element, const Node& attribute, std::wstring_view value);

// Whether a declaration has force: not when its value is empty although its prefix, or the element's own
// name, needs one.
[[nodiscard]] bool IsInForce(const Node& element, const Name& declaration, std::wstring_view value) noexcept;

// The namespace that a prefix stands for at a node, by the declarations and the names of the node and those
// above it. The prefix may be empty; "xml" and "xmlns" are known everywhere.
[[nodiscard]] std::optional<std::wstring> FindNamespace(const Node& node, std::wstring_view prefix);

}  // namespace devkit::msxml
