#include "devkit/msxml/selectedlist.h"

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/comtext.h"
#include "devkit/msxml/tree.h"

namespace devkit::msxml {

Node* SelectedList::At(std::size_t index) const noexcept {
    return index < m_nodes.size() ? m_nodes[index].Get() : nullptr;
}

HRESULT SelectedList::get_item(long index, IXMLDOMNode** ppNode) {
    return Return(index < 0 ? nullptr : At(static_cast<std::size_t>(index)), ppNode);
}

HRESULT SelectedList::get_length(long* pLength) {
    if (pLength == nullptr) return E_INVALIDARG;
    *pLength = static_cast<long>(m_nodes.size());
    return S_OK;
}

HRESULT SelectedList::nextNode(IXMLDOMNode** ppNode) {
    const HRESULT result = Return(At(m_next), ppNode);
    if (result == S_OK) ++m_next;
    return result;
}

HRESULT SelectedList::reset() {
    m_next = 0;
    return S_OK;
}

HRESULT SelectedList::get__newEnum(IUnknown** ppEnumerator) {
    if (ppEnumerator == nullptr) return E_INVALIDARG;
    *ppEnumerator = nullptr;
    return E_NOTIMPL;
}

HRESULT GetElementsByTagName(const Node& node, BSTR name, IXMLDOMNodeList** ppList) noexcept {
    if (ppList == nullptr) return E_INVALIDARG;
    *ppList = nullptr;
    return Guarded([&] {
        const std::wstring_view wanted = View(name);
        std::vector<NodeRef> found;
        for (Node* pNode = Tree::NextWithin(node, node); pNode != nullptr;
             pNode = Tree::NextWithin(node, *pNode)) {
            if (pNode->Type() != NODE_ELEMENT) continue;
            if (wanted == L"*" || pNode->GetName()->Qualified() == wanted) found.emplace_back(pNode);
        }
        return ReturnNew<IXMLDOMNodeList>(new SelectedList(std::move(found)), ppList);
    });
}

}  // namespace devkit::msxml
