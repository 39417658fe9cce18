#include "devkit/msxml/nodeproperties.h"

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/textcontent.h"
#include "devkit/msxml/variants.h"

namespace devkit::msxml {

namespace {

struct KindNames {
    std::wstring_view name;  // nodeName of a kind without names
    std::wstring_view type;  // nodeTypeString
};

KindNames NamesOf(DOMNodeType type) noexcept {
    switch (type) {
        case NODE_ELEMENT:
            return {L"", L"element"};
        case NODE_ATTRIBUTE:
            return {L"", L"attribute"};
        case NODE_TEXT:
            return {L"#text", L"text"};
        case NODE_CDATA_SECTION:
            return {L"#cdata-section", L"cdatasection"};
        case NODE_ENTITY_REFERENCE:
            return {L"", L"entityreference"};
        case NODE_PROCESSING_INSTRUCTION:
            return {L"", L"processinginstruction"};
        case NODE_COMMENT:
            return {L"#comment", L"comment"};
        case NODE_DOCUMENT:
            return {L"#document", L"document"};
        case NODE_DOCUMENT_FRAGMENT:
            return {L"#document-fragment", L"documentfragment"};
        default:
            return {L"", L""};
    }
}

bool HasNodeValue(DOMNodeType type) noexcept {
    return type == NODE_ATTRIBUTE || type == NODE_TEXT || type == NODE_CDATA_SECTION ||
           type == NODE_COMMENT || type == NODE_PROCESSING_INSTRUCTION;
}

HRESULT SetValue(Node& node, std::wstring value) {
    if (node.Type() == NODE_ATTRIBUTE) {
        SetAttributeValue(node, std::move(value));
    } else {
        node.SetData(std::move(value));
    }
    return S_OK;
}

}  // namespace

HRESULT GetNodeName(const Node& node, BSTR* pName) noexcept {
    return ReturnText(node.GetName() ? node.GetName()->Qualified() : NamesOf(node.Type()).name, pName);
}

HRESULT GetNodeType(const Node& node, DOMNodeType* pType) noexcept {
    if (pType == nullptr) return E_INVALIDARG;
    *pType = node.Type();
    return S_OK;
}

HRESULT GetNodeTypeString(const Node& node, BSTR* pName) noexcept {
    return ReturnText(NamesOf(node.Type()).type, pName);
}

HRESULT GetNamespaceUri(const Node& node, BSTR* pUri) noexcept {
    const bool hasUri = node.GetName() && !node.GetName()->Uri().empty();
    return hasUri ? ReturnText(node.GetName()->Uri(), pUri) : ReturnNoText(pUri);
}

HRESULT GetPrefix(const Node& node, BSTR* pPrefix) noexcept {
    const bool hasPrefix = node.GetName() && !node.GetName()->Prefix().empty();
    return hasPrefix ? ReturnText(node.GetName()->Prefix(), pPrefix) : ReturnNoText(pPrefix);
}

HRESULT GetBaseName(const Node& node, BSTR* pName) noexcept {
    return node.GetName() ? ReturnText(node.GetName()->Local(), pName) : ReturnNoText(pName);
}

HRESULT GetNodeValue(const Node& node, VARIANT* pValue) noexcept {
    if (!HasNodeValue(node.Type())) return ReturnNoText(pValue);
    return Guarded([&] { return ReturnText(RawText(node), pValue); });
}

HRESULT PutNodeValue(Node& node, const VARIANT& value) noexcept {
    if (!HasNodeValue(node.Type())) return E_FAIL;
    return Guarded([&] { return SetValue(node, TextOf(value)); });
}

HRESULT GetText(const Node& node, BSTR* pText) noexcept {
    return Guarded([&] { return ReturnText(TextContent(node), pText); });
}

HRESULT PutText(Node& node, BSTR text) noexcept {
    return Guarded([&]() -> HRESULT {
        std::wstring value(View(text));
        if (HasNodeValue(node.Type())) return SetValue(node, std::move(value));
        if (node.Type() != NODE_ELEMENT && node.Type() != NODE_DOCUMENT_FRAGMENT) return E_FAIL;
        SetTextContent(node, std::move(value));
        return S_OK;
    });
}

HRESULT GetNodeTypedValue(const Node& node, VARIANT* pValue) noexcept {
    if (node.Type() != NODE_ELEMENT) return GetNodeValue(node, pValue);
    return Guarded([&] { return ReturnText(TextContent(node), pValue); });
}

HRESULT PutNodeTypedValue(Node& node, const VARIANT& value) noexcept {
    if (node.Type() != NODE_ELEMENT) return PutNodeValue(node, value);
    return Guarded([&] {
        SetTextContent(node, TextOf(value));
        return S_OK;
    });
}

HRESULT ReturnTrue(VARIANT_BOOL* pValue) noexcept {
    if (pValue == nullptr) return E_INVALIDARG;
    *pValue = VARIANT_TRUE;
    return S_OK;
}

}  // namespace devkit::msxml
