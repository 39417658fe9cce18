#include "devkit/msxml/tree/data.h"

#include <utility>

namespace devkit::msxml {

namespace {

bool IsContainer(Kind kind) noexcept {
    return kind == Kind::Element || kind == Kind::Document || kind == Kind::Fragment;
}

// Whether all the text of a node is its data.
bool IsTextInData(const Node& node) noexcept {
    const bool isExposed = node.Is(Kind::Attribute) && node.Children().pFirst != nullptr;
    return !isExposed && !IsContainer(node.What());
}

// Of the text nodes and CDATA sections below the node.
std::wstring GatherText(const Node& node) {
    std::wstring text;
    for (const Node* pNode = &node; pNode != nullptr;) {
        if (pNode != &node && pNode->hasSpaceBefore) text += L' ';
        if (pNode->Is(Kind::Text) || pNode->Is(Kind::CdataSection)) text += pNode->Data();
        const Node* const pNext = pNode->NextWithin(node);
        // The ends of what is left behind on the way to the next node.
        const Node* const pStop = pNext == nullptr ? &node : pNext->Parent();
        for (const Node* pLeft = pNode; pLeft != pStop; pLeft = pLeft->Parent()) {
            if (pLeft->hasSpaceAtEnd) text += L' ';
        }
        pNode = pNext;
    }
    return text;
}

}  // namespace

NodeRef MakeNode(Kind kind, Document& document, SharedName pName, std::wstring data) {
    NodeRef pNode(new Node(kind, document, std::move(pName)));
    if (!data.empty()) pNode->SetData(std::move(data));
    return pNode;
}

std::wstring RawText(const Node& node) { return IsTextInData(node) ? node.Data() : GatherText(node); }

std::wstring_view RawText(const Node& node, std::wstring& room) {
    return IsTextInData(node) ? node.Data() : room = GatherText(node);
}

void SetTextContent(Node& node, std::wstring text) {
    const NodeRef keep(&node);
    if (node.Is(Kind::Attribute)) {
        node.DetachChildren();
        return node.SetData(std::move(text));
    }
    NodeRef pText;
    if (!text.empty()) pText = MakeNode(Kind::Text, node.OwnerDocument(), nullptr, std::move(text));
    node.DetachChildren();
    node.hasSpaceAtEnd = false;
    if (pText) node.Attach(*pText, nullptr);
}

void ExposeValue(Node& node) {
    if (!node.Is(Kind::Attribute) || node.Data().empty()) return;
    const NodeRef pText = MakeNode(Kind::Text, node.OwnerDocument(), nullptr, node.Data());
    node.SetData({});
    node.Attach(*pText, nullptr);
}

std::wstring WithLineFeeds(std::wstring_view text) {
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != L'\r') {
            out += text[i];
        } else if (i + 1 == text.size() || text[i + 1] != L'\n') {
            out += L'\n';
        }
    }
    return out;
}

void JoinTexts(Node& element) {
    Node* pNode = element.NextWithin(element);
    while (pNode != nullptr) {
        const NodeRef pText(pNode);
        const NodeRef pSibling(pNode->Next());
        const bool isText = pNode->Is(Kind::Text);
        if (isText && pSibling && pSibling->Is(Kind::Text)) {
            pNode->SetData(pNode->Data() + pSibling->Data());
            pSibling->Detach();
            continue;
        }
        pNode = pNode->NextWithin(element);
        if (isText && pText->Data().empty()) pText->Detach();
    }
}

}  // namespace devkit::msxml
