// Finding and reading elements.

#include <optional>

#include "base/xps/printschema/printschemahandler.h"
#include "base/xps/printschema/valuetext.h"
#include "base/xps/printschema/xpathliteral.h"
#include "platform/variant.h"

namespace base::xps::printschema {

using platform::Bstr;
using platform::ComPtr;
using platform::Variant;

namespace {

// S_OK without a node means the same as S_FALSE.
[[nodiscard]] HRESULT ResultOf(HRESULT selected, const ComPtr<IXMLDOMNode>& pNode) noexcept {
    return selected == S_OK && !pNode ? S_FALSE : selected;
}

// What the feature classes are told when there is no such thing.
[[nodiscard]] HRESULT FailedIfAbsent(HRESULT hr) noexcept {
    return hr == S_FALSE ? HRESULT_FROM_WIN32(ERROR_NOT_FOUND) : hr;
}

[[nodiscard]] HRESULT CopyText(std::wstring_view text, BSTR* pText) noexcept {
    *pText = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *pText == nullptr ? E_OUTOFMEMORY : S_OK;
}

[[nodiscard]] HRESULT TypedText(IXMLDOMNode* pNode, BSTR* pText) {
    Variant value;
    const HRESULT read = pNode->get_nodeTypedValue(value.Put());
    if (read != S_OK) return read;
    if (value.Type() == VT_BSTR) return CopyText({value.Text(), SysStringLen(value.Text())}, pText);
    // The source is only read, though its declaration does not say so.
    VARIANT* pSource = const_cast<VARIANT*>(&value.Get());
    Variant text;
    const HRESULT converted = VariantChangeTypeEx(text.Put(), pSource, LOCALE_INVARIANT, 0, VT_BSTR);
    if (FAILED(converted)) return converted;
    return CopyText({text.Text(), SysStringLen(text.Text())}, pText);
}

}  // namespace

std::wstring PrintSchemaHandler::NamedElementQuery(std::wstring_view elementName, const Qname& name) const {
    return L"//" + ElementName(elementName) + L"[@name = " + XPathLiteral(QualifiedName(name)) + L"]";
}

std::wstring PrintSchemaHandler::FeatureQuery(const Qname& feature) const {
    return NamedElementQuery(L"Feature", feature);
}

std::wstring PrintSchemaHandler::OptionQuery(const Qname& feature) const {
    return FeatureQuery(feature) + L"/" + ElementName(L"Option");
}

std::wstring PrintSchemaHandler::PropertyQuery(const Qname& property) const {
    return NamedElementQuery(L"Property", property);
}

std::wstring PrintSchemaHandler::ScoredPropertyQuery(const Qname& property) const {
    return NamedElementQuery(L"ScoredProperty", property);
}

std::wstring PrintSchemaHandler::OptionPropertyQuery(const Qname& feature, const Qname& property) const {
    return OptionQuery(feature) + PropertyQuery(property);
}

std::wstring PrintSchemaHandler::OptionScoredPropertyQuery(const Qname& feature,
                                                           const Qname& property) const {
    return OptionQuery(feature) + ScoredPropertyQuery(property);
}

HRESULT PrintSchemaHandler::SelectSingleNode(std::wstring_view query, IXMLDOMNode** ppNode) const {
    if (ppNode == nullptr) return E_POINTER;
    *ppNode = nullptr;
    if (query.empty()) return E_INVALIDARG;
    ComPtr<IXMLDOMNode> pNode;
    const HRESULT selected = m_pDocument->selectSingleNode(Bstr(query).Get(), pNode.Put());
    const HRESULT result = ResultOf(selected, pNode);
    if (result == S_OK) *ppNode = pNode.Detach();
    return result;
}

HRESULT PrintSchemaHandler::SelectNodes(std::wstring_view elementName, IXMLDOMNodeList** ppList) const {
    if (ppList == nullptr) return E_POINTER;
    *ppList = nullptr;
    if (elementName.empty()) return E_FAIL;
    return m_pDocument->selectNodes(Bstr(L"//" + ElementName(elementName)).Get(), ppList);
}

HRESULT PrintSchemaHandler::SelectChild(IXMLDOMNode* pParent, std::wstring_view elementName,
                                        IXMLDOMNode** ppChild) const {
    ComPtr<IXMLDOMNode> pChild;
    const HRESULT selected = pParent->selectSingleNode(Bstr(ElementName(elementName)).Get(), pChild.Put());
    const HRESULT result = ResultOf(selected, pChild);
    *ppChild = result == S_OK ? pChild.Detach() : nullptr;
    return result;
}

HRESULT PrintSchemaHandler::GetAttribute(IXMLDOMNode* pNode, std::wstring_view name, BSTR* pValue) const {
    if (pValue == nullptr) return E_POINTER;
    *pValue = nullptr;
    if (pNode == nullptr) return E_POINTER;
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    const HRESULT mapped = pNode->get_attributes(pAttributes.Put());
    if (mapped != S_OK) return mapped;
    ComPtr<IXMLDOMNode> pAttribute;
    const HRESULT found = pAttributes->getNamedItem(Bstr(name).Get(), pAttribute.Put());
    const HRESULT result = ResultOf(found, pAttribute);
    return result == S_OK ? pAttribute->get_text(pValue) : result;
}

HRESULT PrintSchemaHandler::GetValue(std::wstring_view query, BSTR* pText) const {
    if (pText == nullptr) return E_POINTER;
    *pText = nullptr;
    ComPtr<IXMLDOMNode> pNode;
    const HRESULT selected = SelectSingleNode(query, pNode.Put());
    if (selected != S_OK) return selected;
    ComPtr<IXMLDOMNode> pValue;
    const HRESULT valued = SelectChild(pNode.Get(), L"Value", pValue.Put());
    if (valued == S_OK) return TypedText(pValue.Get(), pText);
    if (FAILED(valued)) return valued;
    ComPtr<IXMLDOMNode> pReference;
    const HRESULT referred = SelectChild(pNode.Get(), L"ParameterRef", pReference.Put());
    return referred == S_OK ? GetParameterValue(pReference.Get(), pText) : referred;
}

HRESULT PrintSchemaHandler::GetParameterValue(IXMLDOMNode* pReference, BSTR* pText) const {
    Bstr name;
    const HRESULT named = GetAttribute(pReference, L"name", name.Put());
    if (named != S_OK) return named;
    ComPtr<IXMLDOMNode> pParameter;
    const HRESULT found = FindParameter(name.View(), pParameter.Put());
    if (found != S_OK) return found;
    ComPtr<IXMLDOMNode> pValue;
    const HRESULT valued = SelectChild(pParameter.Get(), L"Value", pValue.Put());
    return valued == S_OK ? TypedText(pValue.Get(), pText) : valued;
}

HRESULT PrintSchemaHandler::FindParameter(std::wstring_view name, IXMLDOMNode** ppParameter) const {
    *ppParameter = nullptr;
    ComPtr<IXMLDOMNodeList> pParameters;
    const HRESULT selected = SelectNodes(L"ParameterInit", pParameters.Put());
    if (selected != S_OK) return selected;
    for (long index = 0;; ++index) {
        ComPtr<IXMLDOMNode> pParameter;
        const HRESULT got = ResultOf(pParameters->get_item(index, pParameter.Put()), pParameter);
        if (got != S_OK) return got;
        Bstr candidate;
        const HRESULT named = GetAttribute(pParameter.Get(), L"name", candidate.Put());
        if (FAILED(named)) return named;
        if (named == S_OK && candidate.View() == name) {
            *ppParameter = pParameter.Detach();
            return S_OK;
        }
    }
}

HRESULT PrintSchemaHandler::ReadValue(std::wstring_view query, BSTR* pText) const {
    return FailedIfAbsent(GetValue(query, pText));
}

HRESULT PrintSchemaHandler::ReadInteger(std::wstring_view query, std::int32_t* pValue) const {
    if (pValue == nullptr) return E_POINTER;
    Bstr text;
    const HRESULT read = ReadValue(query, text.Put());
    if (FAILED(read)) return read;
    const std::optional<std::int32_t> value = ParseInteger(text.View());
    if (!value) return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    *pValue = *value;
    return S_OK;
}

HRESULT PrintSchemaHandler::ReadLocalName(std::wstring_view query, BSTR* pName) const {
    if (pName == nullptr) return E_POINTER;
    *pName = nullptr;
    Bstr text;
    const HRESULT read = ReadValue(query, text.Put());
    return FAILED(read) ? read : CopyText(LocalPart(text.View()), pName);
}

HRESULT PrintSchemaHandler::GetOptionName(const Qname& feature, SchemaNamespace optionSpace,
                                          BSTR* pOption) const {
    if (pOption == nullptr) return E_POINTER;
    *pOption = nullptr;
    if (feature.localName.empty()) return E_INVALIDARG;

    const std::wstring optionName = XPathLiteral(GetPrefix(optionSpace) + L"OptionName");
    const std::wstring query = OptionQuery(feature) + L" | " + FeatureQuery(feature) + L"/" +
                               ElementName(L"ScoredProperty") + L"[@name = " + optionName + L"]/" +
                               ElementName(L"Value");
    ComPtr<IXMLDOMNode> pNode;
    const HRESULT selected = SelectSingleNode(query, pNode.Put());
    if (selected != S_OK) return FailedIfAbsent(selected);

    Bstr option;
    HRESULT named = GetAttribute(pNode.Get(), L"name", option.Put());
    if (named == S_FALSE) named = TypedText(pNode.Get(), option.Put());
    if (named != S_OK) return FailedIfAbsent(named);
    return option.Empty() ? E_INVALIDARG : CopyText(Stripped(option.View(), optionSpace), pOption);
}

}  // namespace base::xps::printschema
