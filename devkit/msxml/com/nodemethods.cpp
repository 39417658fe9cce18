#include "devkit/msxml/com/nodemethods.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/domstate.h"
#include "devkit/msxml/com/facade.h"
#include "devkit/msxml/com/lists.h"
#include "devkit/msxml/text/serialiser.h"
#include "devkit/msxml/tree/attributes.h"
#include "devkit/msxml/tree/cloning.h"
#include "devkit/msxml/tree/data.h"

namespace devkit::msxml {

namespace {

struct KindTexts {
    Kind kind;
    std::wstring_view type;  // nodeTypeString
    std::wstring_view name;  // nodeName of a kind whose nodes have none of their own
};

constexpr KindTexts kKinds[] = {
    {Kind::Element, L"element", L""},
    {Kind::Attribute, L"attribute", L""},
    {Kind::Text, L"text", L"#text"},
    {Kind::CdataSection, L"cdatasection", L"#cdata-section"},
    {Kind::EntityReference, L"entityreference", L""},
    {Kind::Instruction, L"processinginstruction", L""},
    {Kind::Comment, L"comment", L"#comment"},
    {Kind::Document, L"document", L"#document"},
    {Kind::Fragment, L"documentfragment", L"#document-fragment"},
};

KindTexts TextsOf(Kind kind) noexcept {
    const auto pFound = std::ranges::find(kKinds, kind, &KindTexts::kind);
    return pFound == std::end(kKinds) ? KindTexts{kind, {}, {}} : *pFound;
}

bool HasNodeValue(Kind kind) noexcept {
    return kind == Kind::Attribute || kind == Kind::Text || kind == Kind::CdataSection ||
           kind == Kind::Comment || kind == Kind::Instruction;
}

HRESULT SetValue(Node& node, std::wstring value) {
    if (!HasNodeValue(node.What()) || node.IsXmlDeclaration()) return E_FAIL;
    if (node.Is(Kind::Attribute)) {
        SetAttributeValue(node, std::move(value));
    } else {
        node.SetData(WithLineFeeds(value));
    }
    return S_OK;
}

// An attribute has no place among siblings and no parent, only an element.
const Node* Placed(const Node& node, const Node* pOther) noexcept {
    return node.Is(Kind::Attribute) ? nullptr : pOther;
}

HRESULT ReturnOther(const Node& node, const Node* pOther, IXMLDOMNode** ppNode) noexcept {
    return Answer(ppNode, [&] { return ReturnNode(const_cast<Node*>(Placed(node, pOther)), ppNode); });
}

HRESULT ReturnChild(Node& node, Node* NodeChain::*pEnd, IXMLDOMNode** ppChild) noexcept {
    return Answer(ppChild, [&] {
        ExposeValue(node);
        return ReturnNode(node.Children().*pEnd, ppChild);
    });
}

}  // namespace

std::wstring_view TypeNameOf(Kind kind) noexcept { return TextsOf(kind).type; }

HRESULT GetNodeName(const Node& node, BSTR* pName) noexcept {
    return ReturnText(node.GetName() ? node.GetName()->Qualified() : TextsOf(node.What()).name, pName);
}

HRESULT GetNodeType(const Node& node, DOMNodeType* pType) noexcept {
    if (pType == nullptr) return E_INVALIDARG;
    *pType = static_cast<DOMNodeType>(node.What());
    return S_OK;
}

HRESULT GetNodeTypeString(const Node& node, BSTR* pName) noexcept {
    return ReturnText(TypeNameOf(node.What()), pName);
}

HRESULT GetNamespaceUri(const Node& node, BSTR* pUri) noexcept {
    return ReturnTextIfAny(node.GetName() ? node.GetName()->Uri() : std::wstring_view(), pUri);
}

HRESULT GetPrefix(const Node& node, BSTR* pPrefix) noexcept {
    return ReturnTextIfAny(node.GetName() ? node.GetName()->Prefix() : std::wstring_view(), pPrefix);
}

HRESULT GetBaseName(const Node& node, BSTR* pName) noexcept {
    return node.GetName() ? ReturnText(node.GetName()->Local(), pName) : ReturnNoText(pName);
}

HRESULT GetNodeValue(const Node& node, VARIANT* pValue) noexcept {
    if (!HasNodeValue(node.What())) return ReturnNoText(pValue);
    if (node.Children().pFirst == nullptr) return ReturnText(node.Data(), pValue);
    return Guarded([&] { return ReturnText(RawText(node), pValue); });
}

HRESULT PutNodeValue(Node& node, const VARIANT& value) noexcept {
    return Guarded([&] { return SetValue(node, TextOf(value)); });
}

HRESULT PutData(Node& node, BSTR data) noexcept {
    return Guarded([&] { return SetValue(node, std::wstring(View(data))); });
}

HRESULT GetText(const Node& node, BSTR* pText) noexcept {
    const bool isData = HasNodeValue(node.What()) && node.Children().pFirst == nullptr;
    if (isData) return ReturnText(node.Data(), pText);
    return Guarded([&] { return ReturnText(TextContent(node), pText); });
}

HRESULT PutText(Node& node, BSTR text) noexcept {
    return Guarded([&] {
        std::wstring value(View(text));
        if (!node.Is(Kind::Element) && !node.Is(Kind::Fragment)) return SetValue(node, std::move(value));
        SetTextContent(node, std::move(value));
        return S_OK;
    });
}

HRESULT GetNodeTypedValue(const Node& node, VARIANT* pValue) noexcept {
    if (!node.Is(Kind::Element)) return GetNodeValue(node, pValue);
    return Guarded([&] { return ReturnText(TextContent(node), pValue); });
}

HRESULT PutNodeTypedValue(Node& node, const VARIANT& value) noexcept {
    if (!node.Is(Kind::Element)) return PutNodeValue(node, value);
    return Guarded([&] {
        SetTextContent(node, TextOf(value));
        return S_OK;
    });
}

HRESULT GetParentNode(const Node& node, IXMLDOMNode** ppParent) noexcept {
    return ReturnOther(node, node.Parent(), ppParent);
}

HRESULT GetPreviousSibling(const Node& node, IXMLDOMNode** ppSibling) noexcept {
    return ReturnOther(node, node.Previous(), ppSibling);
}

HRESULT GetNextSibling(const Node& node, IXMLDOMNode** ppSibling) noexcept {
    return ReturnOther(node, node.Next(), ppSibling);
}

HRESULT GetFirstChild(Node& node, IXMLDOMNode** ppChild) noexcept {
    return ReturnChild(node, &NodeChain::pFirst, ppChild);
}

HRESULT GetLastChild(Node& node, IXMLDOMNode** ppChild) noexcept {
    return ReturnChild(node, &NodeChain::pLast, ppChild);
}

HRESULT HasChildNodes(const Node& node, VARIANT_BOOL* pHas) noexcept {
    const bool hasValue = node.Is(Kind::Attribute) && !node.Data().empty();
    const bool has = hasValue || node.Children().pFirst != nullptr;
    const HRESULT result = ReturnFlag(has, pHas);
    return result == S_OK && !has ? S_FALSE : result;
}

HRESULT GetChildNodes(Node& node, IXMLDOMNodeList** ppList) noexcept {
    return Answer(ppList, [&] { return ReturnNew<ChildList>(ppList, node); });
}

HRESULT GetAttributes(Node& node, IXMLDOMNamedNodeMap** ppMap) noexcept {
    return Answer(ppMap,
                  [&] { return node.HasAttributes() ? ReturnNew<NamedNodeMap>(ppMap, node) : S_FALSE; });
}

HRESULT GetOwnerDocument(const Node& node, IXMLDOMDocument** ppDocument) noexcept {
    return Answer(ppDocument, [&] {
        return ReturnNode(node.Is(Kind::Document) ? nullptr : &node.OwnerDocument(), ppDocument);
    });
}

HRESULT GetElementsByTagName(const Node& node, BSTR name, IXMLDOMNodeList** ppList) noexcept {
    return Answer(ppList, [&] {
        if (name == nullptr) return E_INVALIDARG;
        const std::wstring_view wanted = ViewToNull(name);
        std::vector<NodeRef> found;
        for (Node* pNode = node.NextWithin(node); pNode != nullptr; pNode = pNode->NextWithin(node)) {
            const bool isNamed =
                pNode->Is(Kind::Element) && (wanted == L"*" || pNode->GetName()->Qualified() == wanted);
            if (isNamed || wanted.empty()) found.emplace_back(pNode);
        }
        return ReturnNew<SelectedList>(ppList, std::move(found));
    });
}

HRESULT ReturnNoNode(IXMLDOMNode** ppNode) noexcept {
    return Answer(ppNode, [] { return S_FALSE; });
}

HRESULT CloneNode(Node& node, VARIANT_BOOL deep, IXMLDOMNode** ppCopy) noexcept {
    return Answer(ppCopy, [&] { return ReturnNode(Clone(node, deep != VARIANT_FALSE).Get(), ppCopy); });
}

HRESULT GetXml(const Node& node, BSTR* pXml) noexcept {
    return Answer(pXml, [&] { return ReturnText(Serialise(node, Output::Shown), pXml); });
}

HRESULT SelectNodes(Node& node, BSTR query, IXMLDOMNodeList** ppList) noexcept {
    return Answer(ppList, [&] {
        if (query == nullptr) return E_INVALIDARG;
        return ReturnNew<SelectedList>(ppList, StateOf(node).selector.Select(node, View(query)));
    });
}

HRESULT SelectSingleNode(Node& node, BSTR query, IXMLDOMNode** ppNode) noexcept {
    return Answer(ppNode, [&] {
        if (query == nullptr) return E_INVALIDARG;
        const std::vector<NodeRef> found = StateOf(node).selector.Select(node, View(query), 1);
        return ReturnNode(found.empty() ? nullptr : found.front().Get(), ppNode);
    });
}

}  // namespace devkit::msxml
