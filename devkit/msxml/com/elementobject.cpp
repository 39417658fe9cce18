#include "devkit/msxml/com/elementobject.h"

#include <optional>
#include <utility>

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/tree/attributes.h"
#include "devkit/msxml/tree/data.h"

namespace devkit::msxml {

namespace {

// An attribute without a prefix is in no namespace.
std::wstring NamespaceForAttribute(const Node& element, std::wstring_view qualified) {
    const std::size_t colon = qualified.find(L':');
    if (colon == std::wstring_view::npos) return {};
    std::optional<std::wstring> uri = FindNamespace(element, qualified.substr(0, colon));
    if (!uri) throw Refused{XmlPrefixUndeclared};
    return *std::move(uri);
}

NodeRef AttributeOf(IXMLDOMAttribute* pObject) {
    NodeRef pNode = NodeOf(pObject);
    if (!pNode || !pNode->Is(Kind::Attribute)) throw common::HresultError(E_INVALIDARG);
    return pNode;
}

bool IsPossibleName(std::wstring_view name) {
    try {
        CheckQualifiedName(name);
        return true;
    } catch (const Refused&) {
        return false;
    }
}

}  // namespace

HRESULT ElementObject::getAttribute(BSTR name, VARIANT* pValue) {
    return Answer(pValue, [&] {
        if (name == nullptr) return E_INVALIDARG;
        const Node* const pAttribute = FindAttribute(TheNode(), ViewToNull(name));
        if (pAttribute != nullptr) return GetNodeValue(*pAttribute, pValue);
        return IsPossibleName(ViewToNull(name)) ? ReturnNoText(pValue) : E_FAIL;
    });
}

HRESULT ElementObject::setAttribute(BSTR name, VARIANT value) {
    if (name == nullptr) return E_INVALIDARG;
    return Guarded([&] {
        const std::wstring_view qualified = ViewToNull(name);
        std::wstring text = TextOf(value);
        if (Node* const pExisting = FindAttribute(TheNode(), qualified)) {
            SetAttributeValue(*pExisting, std::move(text));
            return S_OK;
        }
        CheckQualifiedName(qualified);
        SharedName pName = ValidName(qualified, NamespaceForAttribute(TheNode(), qualified));
        const NodeRef pAttribute =
            MakeNode(Kind::Attribute, TheNode().OwnerDocument(), std::move(pName), std::move(text));
        PutAttribute(TheNode(), *pAttribute);
        return S_OK;
    });
}

HRESULT ElementObject::removeAttribute(BSTR name) {
    if (name == nullptr) return E_INVALIDARG;
    return Guarded([&] {
        const NodeRef pAttribute(FindAttribute(TheNode(), ViewToNull(name)));
        if (!pAttribute) return S_FALSE;
        RemoveAttribute(*pAttribute);
        return S_OK;
    });
}

HRESULT ElementObject::getAttributeNode(BSTR name, IXMLDOMAttribute** ppAttribute) {
    return Answer(ppAttribute, [&] {
        if (name == nullptr) return E_INVALIDARG;
        return ReturnNode(FindAttribute(TheNode(), ViewToNull(name)), ppAttribute);
    });
}

HRESULT ElementObject::setAttributeNode(IXMLDOMAttribute* pAttribute, IXMLDOMAttribute** ppOld) {
    return AnswerIfWanted(ppOld, [&] {
        const NodeRef pOld = PutAttribute(TheNode(), *AttributeOf(pAttribute));
        return pOld ? ReturnNode(pOld.Get(), ppOld) : S_OK;
    });
}

HRESULT ElementObject::removeAttributeNode(IXMLDOMAttribute* pAttribute, IXMLDOMAttribute** ppOld) {
    return AnswerIfWanted(ppOld, [&] {
        const NodeRef pNode = AttributeOf(pAttribute);
        if (pNode->Parent() != &TheNode()) return E_INVALIDARG;
        RemoveAttribute(*pNode);
        return ReturnNode(pNode.Get(), ppOld);
    });
}

HRESULT ElementObject::getElementsByTagName(BSTR name, IXMLDOMNodeList** ppList) {
    return GetElementsByTagName(TheNode(), name, ppList);
}

HRESULT ElementObject::normalize() {
    return Guarded([&] {
        JoinTexts(TheNode());
        return S_OK;
    });
}

}  // namespace devkit::msxml
