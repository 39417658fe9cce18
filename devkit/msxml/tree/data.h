#pragma once

#include <string>
#include <string_view>

#include "devkit/msxml/tree/node.h"

namespace devkit::msxml {

// A new node without a parent. Its name is null for the kinds that have none. Throws std::bad_alloc.
[[nodiscard]] NodeRef MakeNode(Kind kind, Document& document, SharedName pName, std::wstring data = {});

// All text below a node as it stands: of its text nodes and CDATA sections, in document order, with a blank
// for white space that was dropped between them. For a node with data, the data; for an attribute its value.
[[nodiscard]] std::wstring RawText(const Node& node);
// The same without a copy of what stands in one place; the room takes the rest. Good while the node and the
// room are as they are.
[[nodiscard]] std::wstring_view RawText(const Node& node, std::wstring& room);

// Replaces all children by one text node, or by none for an empty text. For an attribute, its value.
void SetTextContent(Node& node, std::wstring text);

// Gives an attribute's value the form of a text node below it, which most attributes are never asked for.
// Nothing for other nodes. Throws std::bad_alloc.
void ExposeValue(Node& node);

// The text with each line end of a kind that XML knows (CR LF, CR) as LF.
[[nodiscard]] std::wstring WithLineFeeds(std::wstring_view text);

// normalize: joins neighbouring text nodes and drops empty ones, in the whole tree below the element.
void JoinTexts(Node& element);

}  // namespace devkit::msxml
