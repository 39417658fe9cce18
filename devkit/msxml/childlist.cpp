#include "devkit/msxml/childlist.h"

namespace devkit::msxml {

HRESULT ChildList::get_item(long index, IXMLDOMNode** ppNode) { return Return(m_cursor.At(index), ppNode); }

HRESULT ChildList::get_length(long* pLength) {
    if (pLength == nullptr) return E_INVALIDARG;
    *pLength = static_cast<long>(m_cursor.Count());
    return S_OK;
}

HRESULT ChildList::nextNode(IXMLDOMNode** ppNode) {
    if (ppNode == nullptr) return E_INVALIDARG;
    return Return(m_cursor.Next(), ppNode);
}

HRESULT ChildList::reset() {
    m_cursor.Reset();
    return S_OK;
}

HRESULT ChildList::get__newEnum(IUnknown** ppEnumerator) {
    if (ppEnumerator == nullptr) return E_INVALIDARG;
    *ppEnumerator = nullptr;
    return E_NOTIMPL;
}

}  // namespace devkit::msxml
