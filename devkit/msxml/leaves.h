#pragma once

#include <string>

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// New nodes without a parent, of the kinds that are neither element nor attribute.
[[nodiscard]] NodeRef MakeText(Document& document, std::wstring data);
[[nodiscard]] NodeRef MakeCdataSection(Document& document, std::wstring data);
[[nodiscard]] NodeRef MakeComment(Document& document, std::wstring data);
[[nodiscard]] NodeRef MakeFragment(Document& document);
[[nodiscard]] NodeRef MakeEntityReference(Document& document, SharedName pName);
// For the target "xml" as ProcessingInstruction::SetData.
[[nodiscard]] NodeRef MakeInstruction(Document& document, SharedName pTarget, std::wstring data);

// Whether a node is the XML declaration of a document, which the DOM shows as a processing instruction "xml".
[[nodiscard]] bool IsXmlDeclaration(const Node& node) noexcept;

}  // namespace devkit::msxml
