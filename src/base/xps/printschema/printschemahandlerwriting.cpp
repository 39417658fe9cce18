// Building, placing and removing elements.

#include <array>
#include <charconv>

#include "base/xps/printschema/printschemahandler.h"
#include "platform/inorder.h"
#include "platform/variant.h"

namespace base::xps::printschema {

using platform::Bstr;
using platform::ComPtr;
using platform::InOrder;
using platform::InOrderWhileFound;
using platform::Variant;
using platform::Yielded;

namespace {

constexpr std::wstring_view kIntegerType = L"integer";

// What an operation has made goes to the caller when all of it has succeeded.
template <typename Interface>
[[nodiscard]] HRESULT HandOut(HRESULT made, ComPtr<Interface>& pMade, Interface** ppMade) noexcept {
    if (SUCCEEDED(made)) *ppMade = pMade.Detach();
    return made;
}

// Where there is nothing to do, all is done.
[[nodiscard]] HRESULT DoneIfAbsent(HRESULT hr) noexcept { return hr == S_FALSE ? S_OK : hr; }

[[nodiscard]] HRESULT Append(IXMLDOMNode* pParent, IXMLDOMNode* pChild) {
    ComPtr<IXMLDOMNode> pAppended;
    return pParent->appendChild(pChild, pAppended.Put());
}

// A node that the document owns and that hangs nowhere yet.
template <typename Node>
[[nodiscard]] HRESULT CreateNode(IXMLDOMDocument2* pDocument, DOMNodeType type, std::wstring_view name,
                                 std::wstring_view namespaceUri, ComPtr<Node>& pCreated) {
    ComPtr<IXMLDOMNode> pNode;
    return InOrder(
        [&] {
            return pDocument->createNode(Variant(static_cast<LONG>(type)).Get(), Bstr(name).Get(),
                                         Bstr(namespaceUri).Get(), pNode.Put());
        },
        [&] { return pNode ? pNode.QueryTo(pCreated) : E_FAIL; });
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
    ComPtr<IXMLDOMNode> pRemoved;
    return DoneIfAbsent(
        InOrder([&] { return pNode->get_parentNode(pParent.Put()); },
                [&] { return pParent ? pParent->removeChild(pNode, pRemoved.Put()) : E_FAIL; }));
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
    return HandOut(created, pElement, ppElement);
}

HRESULT PrintSchemaHandler::SetAttribute(IXMLDOMElement* pElement, std::wstring_view name,
                                         std::wstring_view namespaceUri, std::wstring_view value) const {
    if (pElement == nullptr) return E_POINTER;
    if (name.empty()) return E_INVALIDARG;
    ComPtr<IXMLDOMAttribute> pAttribute;
    ComPtr<IXMLDOMAttribute> pReplaced;
    return InOrder(
        [&] { return CreateNode(m_pDocument.Get(), NODE_ATTRIBUTE, name, namespaceUri, pAttribute); },
        [&] { return pAttribute->put_value(Variant(value).Get()); },
        [&] { return pElement->setAttributeNode(pAttribute.Get(), pReplaced.Put()); });
}

HRESULT PrintSchemaHandler::CreateNamed(std::wstring_view elementName, std::wstring_view name,
                                        IXMLDOMElement** ppElement) const {
    ComPtr<IXMLDOMElement> pElement;
    const HRESULT created =
        InOrder([&] { return CreateElement(elementName, kFrameworkNamespace, pElement.Put()); },
                [&] { return SetAttribute(pElement.Get(), L"name", {}, name); });
    return HandOut(created, pElement, ppElement);
}

HRESULT PrintSchemaHandler::AppendValue(IXMLDOMElement* pParent, std::wstring_view type,
                                        std::wstring_view text) const {
    const std::wstring typeName = std::wstring(m_instancePrefix.View()) + L"type";
    const std::wstring qualifiedType = std::wstring(m_schemaPrefix.View()).append(type);
    ComPtr<IXMLDOMElement> pValue;
    return InOrder(
        [&] { return CreateElement(L"Value", kFrameworkNamespace, pValue.Put()); },
        [&] { return SetAttribute(pValue.Get(), typeName, kXmlSchemaInstanceNamespace, qualifiedType); },
        [&] { return pValue->put_text(Bstr(text).Get()); }, [&] { return Append(pParent, pValue.Get()); });
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
    const HRESULT created = InOrder([&] { return CreateQualified(elementName, name, pElement.Put()); },
                                    [&] { return AppendValue(pElement.Get(), type, text); });
    return HandOut(created, pElement, ppElement);
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
    ComPtr<IXMLDOMElement> pInitializer;
    const HRESULT created = InOrder(
        [&] { return CreateQualified(L"ParameterRef", parameter, pReference.Put()); },
        [&] {
            return CreateQualifiedWithValue(L"ParameterInit", parameter, type, text, pInitializer.Put());
        });
    return InOrder([&] { return HandOut(created, pReference, ppReference); },
                   [&] { return HandOut(S_OK, pInitializer, ppInitializer); });
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
    ComPtr<IXMLDOMElement> pOption;
    const HRESULT created = InOrder([&] { return CreateQualified(L"Feature", feature, pFeature.Put()); },
                                    [&] { return CreateQualified(L"Option", option, pOption.Put()); },
                                    [&] { return Append(pFeature.Get(), pOption.Get()); });
    return InOrder([&] { return HandOut(created, pFeature, ppFeature); },
                   [&] { return HandOut(S_OK, pOption, ppOption); });
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
    HRESULT removed = S_OK;
    while (removed == S_OK) {
        ComPtr<IXMLDOMNode> pFeature;
        removed = InOrderWhileFound([&] { return SelectSingleNode(query, pFeature.Put()); },
                                    [&] { return RemoveParametersOf(pFeature.Get()); },
                                    [&] { return RemoveNode(pFeature.Get()); });
    }
    return DoneIfAbsent(removed);
}

HRESULT PrintSchemaHandler::RemoveParametersOf(IXMLDOMNode* pFeature) const {
    ComPtr<IXMLDOMNodeList> pReferences;
    const HRESULT selected =
        pFeature->selectNodes(Bstr(L".//" + ElementName(L"ParameterRef")).Get(), pReferences.Put());
    if (FAILED(selected)) return selected;
    if (!pReferences) return E_FAIL;
    HRESULT removed = S_OK;
    for (long index = 0; removed == S_OK; ++index) {
        ComPtr<IXMLDOMNode> pReference;
        removed = InOrderWhileFound(
            [&] { return Yielded(pReferences->get_item(index, pReference.Put()), pReference); },
            [&] { return RemoveParameterOf(pReference.Get()); });
    }
    return DoneIfAbsent(removed);
}

HRESULT PrintSchemaHandler::RemoveParameterOf(IXMLDOMNode* pReference) const {
    Bstr name;
    return DoneIfAbsent(InOrderWhileFound([&] { return GetAttribute(pReference, L"name", name.Put()); },
                                          [&] { return RemoveParameters(name.View()); }));
}

HRESULT PrintSchemaHandler::RemoveParameters(std::wstring_view name) const {
    HRESULT removed = S_OK;
    while (removed == S_OK) {
        ComPtr<IXMLDOMNode> pParameter;
        removed = InOrderWhileFound([&] { return FindParameter(name, pParameter.Put()); },
                                    [&] { return RemoveNode(pParameter.Get()); });
    }
    return DoneIfAbsent(removed);
}

}  // namespace base::xps::printschema
