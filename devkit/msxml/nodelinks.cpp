#include "devkit/msxml/nodelinks.h"

#include "devkit/msxml/childlist.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/namednodemap.h"

namespace devkit::msxml {

HRESULT GetParentNode(const Node& node, IXMLDOMNode** ppParent) noexcept {
    return Return(node.Type() == NODE_ATTRIBUTE ? nullptr : node.Parent(), ppParent);
}

HRESULT GetPreviousSibling(const Node& node, IXMLDOMNode** ppSibling) noexcept {
    return Return(node.Type() == NODE_ATTRIBUTE ? nullptr : node.Previous(), ppSibling);
}

HRESULT GetNextSibling(const Node& node, IXMLDOMNode** ppSibling) noexcept {
    return Return(node.Type() == NODE_ATTRIBUTE ? nullptr : node.Next(), ppSibling);
}

HRESULT HasChildNodes(const Node& node, VARIANT_BOOL* pHas) noexcept {
    if (pHas == nullptr) return E_INVALIDARG;
    *pHas = node.Children().count != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return *pHas == VARIANT_TRUE ? S_OK : S_FALSE;
}

HRESULT GetChildNodes(Node& node, IXMLDOMNodeList** ppList) noexcept {
    if (ppList == nullptr) return E_INVALIDARG;
    *ppList = nullptr;
    return Guarded([&] { return ReturnNew<IXMLDOMNodeList>(new ChildList(node), ppList); });
}

HRESULT GetAttributes(Node& node, IXMLDOMNamedNodeMap** ppMap) noexcept {
    if (ppMap == nullptr) return E_INVALIDARG;
    *ppMap = nullptr;
    if (node.Attributes() == nullptr) return S_FALSE;
    return Guarded([&] { return ReturnNew<IXMLDOMNamedNodeMap>(new NamedNodeMap(node), ppMap); });
}

HRESULT GetOwnerDocument(const Node& node, IXMLDOMDocument** ppDocument) noexcept {
    return Return(node.Type() == NODE_DOCUMENT ? nullptr : &node.OwnerDocument(), ppDocument);
}

HRESULT ReturnNoNode(IXMLDOMNode** ppNode) noexcept { return Return(static_cast<Node*>(nullptr), ppNode); }

}  // namespace devkit::msxml
