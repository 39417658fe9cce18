#include "devkit/msxml/textcontent.h"

#include <utility>

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/tree.h"
#include "devkit/msxml/unicode.h"

namespace devkit::msxml {

namespace {

bool IsContainer(DOMNodeType type) noexcept {
    return type == NODE_ELEMENT || type == NODE_ATTRIBUTE || type == NODE_DOCUMENT ||
           type == NODE_DOCUMENT_FRAGMENT;
}

}  // namespace

std::wstring RawText(const Node& node) {
    if (!IsContainer(node.Type())) return node.Data();
    std::wstring text;
    for (const Node* pNode = &node; pNode != nullptr; pNode = Tree::NextWithin(node, *pNode)) {
        if (pNode->Type() == NODE_TEXT || pNode->Type() == NODE_CDATA_SECTION) text += pNode->Data();
    }
    return text;
}

std::wstring TextContent(const Node& node) {
    std::wstring text = RawText(node);
    const bool isTrimmed =
        IsContainer(node.Type()) && node.Type() != NODE_ATTRIBUTE && !PreservesWhiteSpace(node);
    return isTrimmed ? std::wstring(Trimmed(text)) : text;
}

void SetTextContent(Node& node, std::wstring text) {
    const NodeRef keep(&node);
    NodeRef pText;
    if (!text.empty()) pText = MakeText(node.OwnerDocument(), std::move(text));
    Tree::DetachChildren(node);
    if (pText) Tree::Attach(node, *pText.Get(), nullptr);
}

bool PreservesWhiteSpace(const Node& node) {
    for (const Node* pNode = &node; pNode != nullptr; pNode = pNode->Parent()) {
        if (pNode->Attributes() == nullptr) continue;
        const Node* const pSpace = FindAttribute(*pNode->Attributes(), L"xml:space");
        if (pSpace == nullptr) continue;
        if (RawText(*pSpace) == L"preserve") return true;
        break;
    }
    return node.OwnerDocument().Settings().preserveWhiteSpace;
}

}  // namespace devkit::msxml
