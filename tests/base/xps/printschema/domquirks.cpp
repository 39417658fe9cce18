#include "domquirks.h"

#include <optional>

#include "domslots.h"

namespace tests {
namespace {

std::optional<VtablePatches> g_quirks;
VARIANT g_value = {};

HRESULT STDMETHODCALLTYPE GiveTypedValue(IXMLDOMNode*, VARIANT* pValue) {
    VariantInit(pValue);
    return VariantCopy(pValue, &g_value);
}

HRESULT STDMETHODCALLTYPE GiveWalkedMap(IXMLDOMNode* pNode, IXMLDOMNamedNodeMap** ppMap);

decltype(&GiveWalkedMap) s_pGetAttributes = nullptr;

HRESULT STDMETHODCALLTYPE GiveWalkedMap(IXMLDOMNode* pNode, IXMLDOMNamedNodeMap** ppMap) {
    const HRESULT hr = s_pGetAttributes(pNode, ppMap);
    if (hr != S_OK) return hr;
    platform::ComPtr<IXMLDOMNode> pFirst;
    static_cast<void>((*ppMap)->nextNode(pFirst.Put()));
    return S_OK;
}

}  // namespace

TypedValue::TypedValue(const VARIANT& value) {
    const DomObjects objects;
    g_value = value;
    g_quirks.emplace().Replace(objects.pElement.Get(), GetNodeTypedValue, &GiveTypedValue);
}

TypedValue::~TypedValue() { g_quirks.reset(); }

WalkedMaps::WalkedMaps() {
    const DomObjects objects;
    s_pGetAttributes = g_quirks.emplace().Replace(objects.pElement.Get(), GetAttributes, &GiveWalkedMap);
}

WalkedMaps::~WalkedMaps() { g_quirks.reset(); }

}  // namespace tests
