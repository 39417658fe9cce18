// Removing features with the parameters that belong to them.

#include "base/xps/printschema/printschemahandler.h"
#include "platform/inorder.h"

namespace base::xps::printschema {

using platform::Bstr;
using platform::ComPtr;

namespace {

[[nodiscard]] HRESULT RemoveNode(IXMLDOMNode* pNode) {
    ComPtr<IXMLDOMNode> pParent;
    const HRESULT found = pNode->get_parentNode(pParent.Put());
    if (FAILED(found)) return found;
    if (!pParent) return E_FAIL;
    ComPtr<IXMLDOMNode> pRemoved;
    return pParent->removeChild(pNode, pRemoved.Put());
}

}  // namespace

HRESULT PrintSchemaHandler::RemoveFeature(const Qname& feature) const {
    if (feature.localName.empty()) return E_INVALIDARG;
    const std::wstring query = FeatureQuery(feature);
    for (;;) {
        ComPtr<IXMLDOMNode> pFeature;
        const HRESULT selected = SelectSingleNode(query, pFeature.Put());
        if (selected != S_OK) return FAILED(selected) ? selected : S_OK;
        const HRESULT cleared = RemoveParametersOf(pFeature.Get());
        if (FAILED(cleared)) return cleared;
        const HRESULT removed = RemoveNode(pFeature.Get());
        if (FAILED(removed)) return removed;
    }
}

HRESULT PrintSchemaHandler::RemoveParametersOf(IXMLDOMNode* pFeature) const {
    ComPtr<IXMLDOMNodeList> pReferences;
    const HRESULT selected =
        pFeature->selectNodes(Bstr(L".//" + ElementName(L"ParameterRef")).Get(), pReferences.Put());
    if (FAILED(selected)) return selected;
    if (!pReferences) return E_FAIL;
    for (long index = 0;; ++index) {
        ComPtr<IXMLDOMNode> pReference;
        const HRESULT got = platform::Yielded(pReferences->get_item(index, pReference.Put()), pReference);
        if (got != S_OK) return FAILED(got) ? got : S_OK;
        Bstr name;
        const HRESULT named = GetAttribute(pReference.Get(), L"name", name.Put());
        if (FAILED(named)) return named;
        const HRESULT removed = named == S_OK ? RemoveParameters(name.View()) : S_OK;
        if (FAILED(removed)) return removed;
    }
}

HRESULT PrintSchemaHandler::RemoveParameters(std::wstring_view name) const {
    for (;;) {
        ComPtr<IXMLDOMNode> pParameter;
        const HRESULT found = FindParameter(name, pParameter.Put());
        if (found != S_OK) return FAILED(found) ? found : S_OK;
        const HRESULT removed = RemoveNode(pParameter.Get());
        if (FAILED(removed)) return removed;
    }
}

}  // namespace base::xps::printschema
