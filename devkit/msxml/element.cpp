#include "devkit/msxml/element.h"

#include <optional>

#include "devkit/msxml/attribute.h"
#include "devkit/msxml/attributes.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/errorcodes.h"
#include "devkit/msxml/namespaces.h"
#include "devkit/msxml/selectedlist.h"
#include "devkit/msxml/textcontent.h"
#include "devkit/msxml/tree.h"
#include "devkit/msxml/variants.h"

namespace devkit::msxml {

namespace {

// An attribute without a prefix is in no namespace.
std::wstring NamespaceForAttribute(const Node& element, std::wstring_view qualified) {
    const std::size_t colon = qualified.find(L':');
    if (colon == std::wstring_view::npos) return {};
    std::optional<std::wstring> uri = FindNamespace(element, qualified.substr(0, colon));
    if (!uri) throw ComError{Hresult(XmlPrefixUndeclared)};
    return *std::move(uri);
}

Attribute* AsAttribute(Node* pNode) noexcept { return static_cast<Attribute*>(pNode); }

}  // namespace

HRESULT Element::getAttribute(BSTR name, VARIANT* pValue) {
    if (name == nullptr) return E_INVALIDARG;
    const Node* const pAttribute = FindAttribute(m_attributes, View(name));
    return pAttribute == nullptr ? ReturnNoText(pValue) : GetNodeValue(*pAttribute, pValue);
}

HRESULT Element::setAttribute(BSTR name, VARIANT value) {
    if (name == nullptr) return E_INVALIDARG;
    return Guarded([&] {
        std::wstring text = TextOf(value);
        if (Node* const pExisting = FindAttribute(m_attributes, View(name))) {
            SetAttributeValue(*pExisting, std::move(text));
            return S_OK;
        }
        CheckQualifiedName(View(name));
        SharedName pName = ValidName(View(name), NamespaceForAttribute(*this, View(name)));
        PutAttribute(*this, *MakeAttribute(OwnerDocument(), std::move(pName), std::move(text)).Get());
        return S_OK;
    });
}

HRESULT Element::removeAttribute(BSTR name) {
    if (name == nullptr) return E_INVALIDARG;
    const NodeRef pAttribute(FindAttribute(m_attributes, View(name)));
    if (!pAttribute) return S_FALSE;
    Tree::Detach(*pAttribute.Get());
    return S_OK;
}

HRESULT Element::getAttributeNode(BSTR name, IXMLDOMAttribute** ppAttribute) {
    if (ppAttribute == nullptr) return E_INVALIDARG;
    *ppAttribute = nullptr;
    if (name == nullptr) return E_INVALIDARG;
    return Return(AsAttribute(FindAttribute(m_attributes, View(name))), ppAttribute);
}

HRESULT Element::setAttributeNode(IXMLDOMAttribute* pAttribute, IXMLDOMAttribute** ppOld) {
    if (ppOld != nullptr) *ppOld = nullptr;
    const NodeRef pNode = NodeOf(pAttribute);
    if (!pNode || pNode->Type() != NODE_ATTRIBUTE) return E_INVALIDARG;
    return Guarded([&] {
        const NodeRef pOld = PutAttribute(*this, *pNode.Get());
        if (ppOld != nullptr && pOld) return Return(AsAttribute(pOld.Get()), ppOld);
        return S_OK;
    });
}

HRESULT Element::removeAttributeNode(IXMLDOMAttribute* pAttribute, IXMLDOMAttribute** ppOld) {
    if (ppOld != nullptr) *ppOld = nullptr;
    const NodeRef pNode = NodeOf(pAttribute);
    if (!pNode || pNode->Type() != NODE_ATTRIBUTE || pNode->Parent() != this) return E_INVALIDARG;
    Tree::Detach(*pNode.Get());
    return ppOld == nullptr ? S_OK : Return(AsAttribute(pNode.Get()), ppOld);
}

HRESULT Element::getElementsByTagName(BSTR name, IXMLDOMNodeList** ppList) {
    return GetElementsByTagName(*this, name, ppList);
}

// Joins neighbouring text nodes and drops empty ones, in the whole tree below the element.
HRESULT Element::normalize() {
    return Guarded([&] {
        Node* pNode = Tree::NextWithin(*this, *this);
        while (pNode != nullptr) {
            const NodeRef pText(pNode);
            Node* const pSibling = pNode->Next();
            const bool isText = pNode->Type() == NODE_TEXT;
            if (isText && pSibling != nullptr && pSibling->Type() == NODE_TEXT) {
                pNode->SetData(pNode->Data() + pSibling->Data());
                Tree::Detach(*NodeRef(pSibling).Get());
                continue;
            }
            pNode = Tree::NextWithin(*this, *pNode);
            if (isText && pText->Data().empty()) Tree::Detach(*pText.Get());
        }
        return S_OK;
    });
}

}  // namespace devkit::msxml
