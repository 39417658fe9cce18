// Building, placing and removing elements.

#include <array>
#include <charconv>

#include "base/xps/printschema/printschemahandler.h"
#include "platform/inorder.h"
#include "platform/variant.h"

namespace base::xps::printschema {

using platform::Bstr;
using platform::ComPtr;
using platform::Variant;

namespace {

constexpr std::wstring_view kIntegerType = L"integer";

[[nodiscard]] HRESULT Append(IXMLDOMNode* pParent, IXMLDOMNode* pChild) {
    ComPtr<IXMLDOMNode> pAppended;
    return pParent->appendChild(pChild, pAppended.Put());
}

// A node that the document owns and that hangs nowhere yet.
template <typename Node>
[[nodiscard]] HRESULT CreateNode(IXMLDOMDocument2* pDocument, DOMNodeType type, std::wstring_view name,
                                 std::wstring_view namespaceUri, ComPtr<Node>& pCreated) {
    ComPtr<IXMLDOMNode> pNode;
    const HRESULT created = pDocument->createNode(Variant(static_cast<LONG>(type)).Get(), Bstr(name).Get(),
                                                  Bstr(namespaceUri).Get(), pNode.Put());
    if (FAILED(created)) return created;
    return pNode ? pNode.QueryTo(pCreated) : E_FAIL;
}

[[nodiscard]] bool IsKeywordParameter(std::wstring_view name) noexcept {
    return name == L"PageWatermarkSizeWidth" || name == L"PageWatermarkSizeHeight";
}

[[nodiscard]] std::wstring IntegerText(std::int32_t value) {
    std::array<char, 12> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return std::wstring(digits.data(), end);
}

[[nodiscard]] HRESULT RemoveNode(IXMLDOMNode* pNode) {
    ComPtr<IXMLDOMNode> pParent;
    const HRESULT found = pNode->get_parentNode(pParent.Put());
    if (FAILED(found)) return found;
    if (!pParent) return E_FAIL;
    ComPtr<IXMLDOMNode> pRemoved;
    return pParent->removeChild(pNode, pRemoved.Put());
}

}  // namespace

HRESULT PrintSchemaHandler::CreateElement(std::wstring_view localName, std::wstring_view namespaceUri,
                                          IXMLDOMElement** ppElement) const {
    if (ppElement == nullptr) return E_POINTER;
    *ppElement = nullptr;
    if (localName.empty()) return E_INVALIDARG;
    ComPtr<IXMLDOMElement> pElement;
    const HRESULT created =
        CreateNode(m_pDocument.Get(), NODE_ELEMENT, ElementName(localName), namespaceUri, pElement);
    if (SUCCEEDED(created)) *ppElement = pElement.Detach();
    return created;
}

HRESULT PrintSchemaHandler::SetAttribute(IXMLDOMElement* pElement, std::wstring_view name,
                                         std::wstring_view namespaceUri, std::wstring_view value) const {
    if (pElement == nullptr) return E_POINTER;
    if (name.empty()) return E_INVALIDARG;
    ComPtr<IXMLDOMAttribute> pAttribute;
    const HRESULT created = CreateNode(m_pDocument.Get(), NODE_ATTRIBUTE, name, namespaceUri, pAttribute);
    if (FAILED(created)) return created;
    const HRESULT valued = pAttribute->put_value(Variant(value).Get());
    if (FAILED(valued)) return valued;
    ComPtr<IXMLDOMAttribute> pReplaced;
    return pElement->setAttributeNode(pAttribute.Get(), pReplaced.Put());
}

HRESULT PrintSchemaHandler::CreateNamed(std::wstring_view elementName, std::wstring_view name,
                                        IXMLDOMElement** ppElement) const {
    ComPtr<IXMLDOMElement> pElement;
    const HRESULT created = CreateElement(elementName, kFrameworkNamespace, pElement.Put());
    if (FAILED(created)) return created;
    const HRESULT named = SetAttribute(pElement.Get(), L"name", {}, name);
    if (SUCCEEDED(named)) *ppElement = pElement.Detach();
    return named;
}

HRESULT PrintSchemaHandler::AppendValue(IXMLDOMElement* pParent, std::wstring_view type,
                                        std::wstring_view text) const {
    ComPtr<IXMLDOMElement> pValue;
    const HRESULT created = CreateElement(L"Value", kFrameworkNamespace, pValue.Put());
    if (FAILED(created)) return created;
    const HRESULT typed =
        SetAttribute(pValue.Get(), std::wstring(m_instancePrefix.View()) + L"type",
                     kXmlSchemaInstanceNamespace, std::wstring(m_schemaPrefix.View()).append(type));
    if (FAILED(typed)) return typed;
    const HRESULT written = pValue->put_text(Bstr(text).Get());
    return FAILED(written) ? written : Append(pParent, pValue.Get());
}

HRESULT PrintSchemaHandler::CreateQualified(std::wstring_view elementName, const Qname& name,
                                            IXMLDOMElement** ppElement) const {
    if (ppElement == nullptr) return E_POINTER;
    *ppElement = nullptr;
    if (name.localName.empty()) return E_INVALIDARG;
    return CreateNamed(elementName, QualifiedName(name), ppElement);
}

HRESULT PrintSchemaHandler::CreateQualifiedWithValue(std::wstring_view elementName, const Qname& name,
                                                     std::wstring_view type, std::wstring_view text,
                                                     IXMLDOMElement** ppElement) const {
    if (ppElement == nullptr) return E_POINTER;
    *ppElement = nullptr;
    ComPtr<IXMLDOMElement> pElement;
    const HRESULT created = CreateQualified(elementName, name, pElement.Put());
    if (FAILED(created)) return created;
    const HRESULT valued = AppendValue(pElement.Get(), type, text);
    if (SUCCEEDED(valued)) *ppElement = pElement.Detach();
    return valued;
}

HRESULT PrintSchemaHandler::CreateProperty(const Qname& name, IXMLDOMElement** ppProperty) const {
    return CreateQualified(L"Property", name, ppProperty);
}

HRESULT PrintSchemaHandler::CreatePropertyWithValue(const Qname& name, std::wstring_view type,
                                                    std::wstring_view text,
                                                    IXMLDOMElement** ppProperty) const {
    return CreateQualifiedWithValue(L"Property", name, type, text, ppProperty);
}

HRESULT PrintSchemaHandler::CreateIntegerProperty(const Qname& name, std::int32_t value,
                                                  IXMLDOMElement** ppProperty) const {
    return CreatePropertyWithValue(name, kIntegerType, IntegerText(value), ppProperty);
}

HRESULT PrintSchemaHandler::CreateScoredProperty(const Qname& name, IXMLDOMElement** ppProperty) const {
    return CreateQualified(L"ScoredProperty", name, ppProperty);
}

HRESULT PrintSchemaHandler::CreateScoredPropertyWithValue(const Qname& name, std::wstring_view type,
                                                          std::wstring_view text,
                                                          IXMLDOMElement** ppProperty) const {
    return CreateQualifiedWithValue(L"ScoredProperty", name, type, text, ppProperty);
}

HRESULT PrintSchemaHandler::CreateIntegerScoredProperty(const Qname& name, std::int32_t value,
                                                        IXMLDOMElement** ppProperty) const {
    return CreateScoredPropertyWithValue(name, kIntegerType, IntegerText(value), ppProperty);
}

HRESULT PrintSchemaHandler::CreateParameter(std::wstring_view name, std::wstring_view type,
                                            std::wstring_view text, IXMLDOMElement** ppReference,
                                            IXMLDOMElement** ppInitializer) const {
    if (ppReference == nullptr || ppInitializer == nullptr) return E_POINTER;
    *ppReference = nullptr;
    *ppInitializer = nullptr;
    if (name.empty() || type.empty() || text.empty()) return E_INVALIDARG;

    const Qname parameter = {IsKeywordParameter(name) ? SchemaNamespace::Keywords : SchemaNamespace::Private,
                             std::wstring(name)};
    ComPtr<IXMLDOMElement> pReference;
    const HRESULT referred = CreateQualified(L"ParameterRef", parameter, pReference.Put());
    if (FAILED(referred)) return referred;
    ComPtr<IXMLDOMElement> pInitializer;
    const HRESULT initialized =
        CreateQualifiedWithValue(L"ParameterInit", parameter, type, text, pInitializer.Put());
    if (FAILED(initialized)) return initialized;
    *ppReference = pReference.Detach();
    *ppInitializer = pInitializer.Detach();
    return S_OK;
}

HRESULT PrintSchemaHandler::CreateIntegerParameter(std::wstring_view name, std::int32_t value,
                                                   IXMLDOMElement** ppReference,
                                                   IXMLDOMElement** ppInitializer) const {
    return CreateParameter(name, kIntegerType, IntegerText(value), ppReference, ppInitializer);
}

HRESULT PrintSchemaHandler::CreateFeatureOption(const Qname& feature, const Qname& option,
                                                IXMLDOMElement** ppFeature, IXMLDOMElement** ppOption) const {
    if (ppFeature == nullptr || ppOption == nullptr) return E_POINTER;
    *ppFeature = nullptr;
    *ppOption = nullptr;
    ComPtr<IXMLDOMElement> pFeature;
    const HRESULT featured = CreateQualified(L"Feature", feature, pFeature.Put());
    if (FAILED(featured)) return featured;
    ComPtr<IXMLDOMElement> pOption;
    const HRESULT optioned = CreateQualified(L"Option", option, pOption.Put());
    if (FAILED(optioned)) return optioned;
    const HRESULT appended = Append(pFeature.Get(), pOption.Get());
    if (FAILED(appended)) return appended;
    *ppFeature = pFeature.Detach();
    *ppOption = pOption.Detach();
    return S_OK;
}

HRESULT PrintSchemaHandler::AppendToRoot(IXMLDOMNode* pNode) const {
    if (pNode == nullptr) return E_POINTER;
    ComPtr<IXMLDOMNode> pRoot;
    const HRESULT selected = SelectSingleNode(L"//" + ElementName(m_rootName.View()), pRoot.Put());
    if (selected != S_OK) return FAILED(selected) ? selected : E_FAIL;
    return Append(pRoot.Get(), pNode);
}

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
