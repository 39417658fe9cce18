#include "devkit/msxml/nodequeries.h"

#include "devkit/msxml/cloning.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/comtext.h"
#include "devkit/msxml/selectedlist.h"
#include "devkit/msxml/serialiser.h"
#include "devkit/msxml/xpath.h"

namespace devkit::msxml {

HRESULT CloneNode(Node& node, VARIANT_BOOL deep, IXMLDOMNode** ppCopy) noexcept {
    if (ppCopy == nullptr) return E_INVALIDARG;
    *ppCopy = nullptr;
    return Guarded([&] { return Return(Clone(node, deep != VARIANT_FALSE).Get(), ppCopy); });
}

HRESULT GetXml(const Node& node, BSTR* pXml) noexcept {
    if (pXml == nullptr) return E_INVALIDARG;
    *pXml = nullptr;
    return Guarded([&] { return ReturnText(Serialise(node, DeclaredEncoding::Dropped), pXml); });
}

HRESULT SelectNodes(Node& node, BSTR query, IXMLDOMNodeList** ppList) noexcept {
    if (ppList == nullptr) return E_INVALIDARG;
    *ppList = nullptr;
    if (query == nullptr) return E_INVALIDARG;
    return Guarded(
        [&] { return ReturnNew<IXMLDOMNodeList>(new SelectedList(Select(node, View(query))), ppList); });
}

HRESULT SelectSingleNode(Node& node, BSTR query, IXMLDOMNode** ppNode) noexcept {
    if (ppNode == nullptr) return E_INVALIDARG;
    *ppNode = nullptr;
    if (query == nullptr) return E_INVALIDARG;
    return Guarded([&] {
        const std::vector<NodeRef> found = Select(node, View(query));
        return Return(found.empty() ? nullptr : found.front().Get(), ppNode);
    });
}

}  // namespace devkit::msxml
