#include "devkit/msxml/namednodemap.h"

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/comtext.h"
#include "devkit/msxml/tree.h"

namespace devkit::msxml {

HRESULT NamedNodeMap::getNamedItem(BSTR name, IXMLDOMNode** ppNode) {
    if (ppNode == nullptr) return E_INVALIDARG;
    *ppNode = nullptr;
    if (name == nullptr) return E_INVALIDARG;
    return Return(FindAttribute(*m_cursor.Owner().Attributes(), View(name)), ppNode);
}

HRESULT NamedNodeMap::setNamedItem(IXMLDOMNode* pNew, IXMLDOMNode** ppNode) {
    if (ppNode != nullptr) *ppNode = nullptr;
    if (pNew == nullptr) return E_INVALIDARG;
    const NodeRef pAttribute = NodeOf(pNew);
    if (!pAttribute || pAttribute->Type() != NODE_ATTRIBUTE) return E_FAIL;
    return Guarded([&] {
        PutAttribute(m_cursor.Owner(), *pAttribute.Get());
        return ppNode == nullptr ? S_OK : Return(pAttribute.Get(), ppNode);
    });
}

HRESULT NamedNodeMap::Remove(Node* pAttribute, IXMLDOMNode** ppNode) noexcept {
    const NodeRef pRemoved(pAttribute);
    if (!pRemoved) return S_FALSE;
    if (m_cursor.Owner().Type() != NODE_ELEMENT) return E_FAIL;
    Tree::Detach(*pRemoved.Get());
    return ppNode == nullptr ? S_OK : Return(pRemoved.Get(), ppNode);
}

HRESULT NamedNodeMap::removeNamedItem(BSTR name, IXMLDOMNode** ppNode) {
    if (ppNode != nullptr) *ppNode = nullptr;
    if (name == nullptr) return E_INVALIDARG;
    return Remove(FindAttribute(*m_cursor.Owner().Attributes(), View(name)), ppNode);
}

HRESULT NamedNodeMap::get_item(long index, IXMLDOMNode** ppNode) {
    return Return(m_cursor.At(index), ppNode);
}

HRESULT NamedNodeMap::get_length(long* pLength) {
    if (pLength == nullptr) return E_INVALIDARG;
    *pLength = static_cast<long>(m_cursor.Count());
    return S_OK;
}

HRESULT NamedNodeMap::getQualifiedItem(BSTR baseName, BSTR uri, IXMLDOMNode** ppNode) {
    if (ppNode == nullptr) return E_INVALIDARG;
    *ppNode = nullptr;
    if (baseName == nullptr) return E_INVALIDARG;
    return Return(FindAttribute(*m_cursor.Owner().Attributes(), View(baseName), View(uri)), ppNode);
}

HRESULT NamedNodeMap::removeQualifiedItem(BSTR baseName, BSTR uri, IXMLDOMNode** ppNode) {
    if (ppNode != nullptr) *ppNode = nullptr;
    if (baseName == nullptr) return E_INVALIDARG;
    return Remove(FindAttribute(*m_cursor.Owner().Attributes(), View(baseName), View(uri)), ppNode);
}

HRESULT NamedNodeMap::nextNode(IXMLDOMNode** ppNode) {
    if (ppNode == nullptr) return E_INVALIDARG;
    return Return(m_cursor.Next(), ppNode);
}

HRESULT NamedNodeMap::reset() {
    m_cursor.Reset();
    return S_OK;
}

HRESULT NamedNodeMap::get__newEnum(IUnknown** ppEnumerator) {
    if (ppEnumerator == nullptr) return E_INVALIDARG;
    *ppEnumerator = nullptr;
    return E_NOTIMPL;
}

}  // namespace devkit::msxml
