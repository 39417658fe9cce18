// Finding and reading elements.

#include <limits>
#include <new>
#include <optional>
#include <utility>

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

// Room for the queries that are asked for nearly every ticket.
constexpr std::size_t kUsualQueryLength = 192;

// Appends the text as an XPath 1.0 string: between double quotes, or, since XPath knows no escapes, put
// together from pieces when it holds a double quote itself.
void AppendLiteral(std::wstring& query, std::wstring_view text) {
    if (text.find(L'"') == std::wstring_view::npos) {
        query.append(L"\"").append(text).append(L"\"");
        return;
    }
    query += L"concat(\"";
    for (const wchar_t character : text) {
        if (character == L'"') {
            query += L"\", '\"', \"";
        } else {
            query += character;
        }
    }
    query += L"\")";
}

// White space as XML has it.
[[nodiscard]] std::wstring_view Trimmed(std::wstring_view text) {
    constexpr std::wstring_view kSpace = L" \t\r\n";
    const std::size_t first = text.find_first_not_of(kSpace);
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

// A decimal number with an optional sign and white space round it; nothing when it is not one or does not
// fit into 32 bits.
[[nodiscard]] std::optional<std::int32_t> ParseInteger(std::wstring_view text) {
    std::wstring_view digits = Trimmed(text);
    const bool isNegative = digits.starts_with(L'-');
    if (isNegative || digits.starts_with(L'+')) digits.remove_prefix(1);
    if (digits.empty()) return std::nullopt;

    constexpr std::int64_t kLimit = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    for (const wchar_t digit : digits) {
        if (digit < L'0' || digit > L'9') return std::nullopt;
        value = value * 10 + (digit - L'0');
        if (value > kLimit + (isNegative ? 1 : 0)) return std::nullopt;
    }
    return static_cast<std::int32_t>(isNegative ? -value : value);
}

// What follows the first colon of a qualified name with white space round it; a bare word as it is.
[[nodiscard]] std::wstring_view LocalPart(std::wstring_view text) {
    const std::wstring_view name = Trimmed(text);
    const std::size_t colon = name.find(L':');
    return colon == std::wstring_view::npos ? name : name.substr(colon + 1);
}

// What the feature classes are told of a value that could not be read. They go on without a value that is not
// there, or makes no sense; one that there is no memory for is neither.
[[nodiscard]] HRESULT ForFeature(HRESULT hr) {
    if (hr == E_OUTOFMEMORY) throw std::bad_alloc();
    return hr == S_FALSE ? HRESULT_FROM_WIN32(ERROR_NOT_FOUND) : hr;
}

[[nodiscard]] HRESULT CopyText(std::wstring_view text, BSTR* pText) noexcept {
    *pText = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *pText == nullptr ? E_OUTOFMEMORY : S_OK;
}

[[nodiscard]] HRESULT CopyText(const Variant& text, BSTR* pText) noexcept {
    return CopyText({text.Text(), SysStringLen(text.Text())}, pText);
}

[[nodiscard]] HRESULT TypedText(IXMLDOMNode* pNode, BSTR* pText) {
    Variant value;
    const HRESULT read = pNode->get_nodeTypedValue(value.Put());
    if (read != S_OK) return read;
    if (value.Type() == VT_BSTR) return CopyText(value, pText);
    // The source is only read, though its declaration does not say so.
    VARIANT* pSource = const_cast<VARIANT*>(&value.Get());
    Variant text;
    return InOrder([&] { return VariantChangeTypeEx(text.Put(), pSource, LOCALE_INVARIANT, 0, VT_BSTR); },
                   [&] { return CopyText(text, pText); });
}

// Whether the node is an element of the framework with this local name.
[[nodiscard]] HRESULT IsFrameworkElement(IXMLDOMNode* pNode, std::wstring_view localName, bool& isElement) {
    isElement = false;
    Bstr base;
    Bstr uri;
    // Most nodes are told by their name alone.
    const HRESULT named = pNode->get_baseName(base.Put());
    if (FAILED(named) || base.View() != localName) return named;
    const HRESULT bound = pNode->get_namespaceURI(uri.Put());
    isElement = SUCCEEDED(bound) && uri.View() == kFrameworkNamespace;
    return bound;
}

// The first child that is an element of the framework with this local name: what a query for it would find,
// at a fraction of the price.
[[nodiscard]] HRESULT FindChild(IXMLDOMNode* pParent, std::wstring_view localName, IXMLDOMNode** ppChild) {
    *ppChild = nullptr;
    ComPtr<IXMLDOMNode> pChild;
    HRESULT found = Yielded(pParent->get_firstChild(pChild.Put()), pChild);
    while (found == S_OK) {
        bool isIt = false;
        const HRESULT looked = IsFrameworkElement(pChild.Get(), localName, isIt);
        if (FAILED(looked)) return looked;
        if (isIt) {
            *ppChild = pChild.Detach();
            return S_OK;
        }
        ComPtr<IXMLDOMNode> pNext;
        found = Yielded(pChild->get_nextSibling(pNext.Put()), pNext);
        pChild = std::move(pNext);
    }
    return found;
}

[[nodiscard]] HRESULT ToInteger(const Bstr& text, std::int32_t* pValue) {
    const std::optional<std::int32_t> value = ParseInteger(text.View());
    if (!value) return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    *pValue = *value;
    return S_OK;
}

}  // namespace

std::wstring PrintSchemaHandler::NamedElementQuery(std::wstring_view elementName, const Qname& name) const {
    std::wstring query;
    query.reserve(kUsualQueryLength);
    query.append(L"//").append(m_frameworkPrefix.View()).append(elementName).append(L"[@name = ");
    AppendLiteral(query, QualifiedName(name));
    return query.append(L"]");
}

std::wstring PrintSchemaHandler::FeatureQuery(const Qname& feature) const {
    return NamedElementQuery(L"Feature", feature);
}

std::wstring PrintSchemaHandler::OptionQuery(const Qname& feature) const {
    return FeatureQuery(feature).append(L"/").append(m_frameworkPrefix.View()).append(L"Option");
}

std::wstring PrintSchemaHandler::PropertyQuery(const Qname& property) const {
    return NamedElementQuery(L"Property", property);
}

std::wstring PrintSchemaHandler::ScoredPropertyQuery(const Qname& property) const {
    return NamedElementQuery(L"ScoredProperty", property);
}

HRESULT PrintSchemaHandler::SelectSingleNode(std::wstring_view query, IXMLDOMNode** ppNode) const {
    if (ppNode == nullptr) return E_POINTER;
    *ppNode = nullptr;
    return query.empty() ? E_INVALIDARG : SelectBelow(m_pDocument.Get(), query, ppNode);
}

HRESULT PrintSchemaHandler::SelectNodes(std::wstring_view elementName, IXMLDOMNodeList** ppList) const {
    if (ppList == nullptr) return E_POINTER;
    *ppList = nullptr;
    if (elementName.empty()) return E_FAIL;
    ComPtr<IXMLDOMNodeList> pList;
    const HRESULT selected =
        m_pDocument->selectNodes(Bstr(L"//" + ElementName(elementName)).Get(), pList.Put());
    const HRESULT result = Yielded(selected, pList);
    if (result == S_OK) *ppList = pList.Detach();
    return result;
}

HRESULT PrintSchemaHandler::SelectBelow(IXMLDOMNode* pContext, std::wstring_view query,
                                        IXMLDOMNode** ppNode) const {
    *ppNode = nullptr;
    ComPtr<IXMLDOMNode> pNode;
    const HRESULT selected = pContext->selectSingleNode(Bstr(query).Get(), pNode.Put());
    const HRESULT result = Yielded(selected, pNode);
    if (result == S_OK) *ppNode = pNode.Detach();
    return result;
}

HRESULT PrintSchemaHandler::SelectProperty(IXMLDOMNode* pBelow, PropertyKind kind, const Qname& property,
                                           IXMLDOMNode** ppProperty) const {
    std::wstring query =
        kind == PropertyKind::Scored ? ScoredPropertyQuery(property) : PropertyQuery(property);
    return SelectBelow(pBelow, query.insert(0, L"."), ppProperty);
}

HRESULT PrintSchemaHandler::GetAttribute(IXMLDOMNode* pNode, std::wstring_view name, BSTR* pValue) const {
    if (pValue == nullptr) return E_POINTER;
    *pValue = nullptr;
    if (pNode == nullptr) return E_POINTER;
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    ComPtr<IXMLDOMNode> pAttribute;
    return InOrderWhileFound(
        [&] { return Yielded(pNode->get_attributes(pAttributes.Put()), pAttributes); },
        [&] { return Yielded(pAttributes->getNamedItem(Bstr(name).Get(), pAttribute.Put()), pAttribute); },
        [&] { return pAttribute->get_text(pValue); });
}

HRESULT PrintSchemaHandler::GetValue(std::wstring_view query, BSTR* pText) const {
    if (pText == nullptr) return E_POINTER;
    *pText = nullptr;
    ComPtr<IXMLDOMNode> pNode;
    return InOrderWhileFound([&] { return SelectSingleNode(query, pNode.Put()); },
                             [&] { return ValueOf(pNode.Get(), pText); });
}

HRESULT PrintSchemaHandler::ValueOf(IXMLDOMNode* pNode, BSTR* pText) const {
    ComPtr<IXMLDOMNode> pValue;
    const HRESULT valued = FindChild(pNode, L"Value", pValue.Put());
    if (valued == S_OK) return TypedText(pValue.Get(), pText);
    if (FAILED(valued)) return valued;
    ComPtr<IXMLDOMNode> pReference;
    return InOrderWhileFound([&] { return FindChild(pNode, L"ParameterRef", pReference.Put()); },
                             [&] { return GetParameterValue(pReference.Get(), pText); });
}

HRESULT PrintSchemaHandler::GetParameterValue(IXMLDOMNode* pReference, BSTR* pText) const {
    Bstr name;
    ComPtr<IXMLDOMNode> pParameter;
    ComPtr<IXMLDOMNode> pValue;
    return InOrderWhileFound([&] { return GetAttribute(pReference, L"name", name.Put()); },
                             [&] { return FindParameter(name.View(), pParameter.Put()); },
                             [&] { return FindChild(pParameter.Get(), L"Value", pValue.Put()); },
                             [&] { return TypedText(pValue.Get(), pText); });
}

HRESULT PrintSchemaHandler::FindParameter(std::wstring_view name, IXMLDOMNode** ppParameter) const {
    *ppParameter = nullptr;
    ComPtr<IXMLDOMNodeList> pParameters;
    const HRESULT selected = SelectNodes(L"ParameterInit", pParameters.Put());
    if (selected != S_OK) return selected;
    for (long index = 0;; ++index) {
        ComPtr<IXMLDOMNode> pParameter;
        const HRESULT got = Yielded(pParameters->get_item(index, pParameter.Put()), pParameter);
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
    return ForFeature(GetValue(query, pText));
}

HRESULT PrintSchemaHandler::ReadInteger(std::wstring_view query, std::int32_t* pValue) const {
    if (pValue == nullptr) return E_POINTER;
    Bstr text;
    return InOrder([&] { return ReadValue(query, text.Put()); }, [&] { return ToInteger(text, pValue); });
}

HRESULT PrintSchemaHandler::ReadInteger(IXMLDOMNode* pBelow, PropertyKind kind, const Qname& property,
                                        std::int32_t* pValue) const {
    if (pBelow == nullptr || pValue == nullptr) return E_POINTER;
    ComPtr<IXMLDOMNode> pProperty;
    Bstr text;
    return ForFeature(InOrderWhileFound(
        [&] { return SelectProperty(pBelow, kind, property, pProperty.Put()); },
        [&] { return ValueOf(pProperty.Get(), text.Put()); }, [&] { return ToInteger(text, pValue); }));
}

HRESULT PrintSchemaHandler::ReadLocalName(IXMLDOMNode* pBelow, PropertyKind kind, const Qname& property,
                                          BSTR* pName) const {
    if (pName == nullptr) return E_POINTER;
    *pName = nullptr;
    if (pBelow == nullptr) return E_POINTER;
    ComPtr<IXMLDOMNode> pProperty;
    Bstr text;
    return ForFeature(
        InOrderWhileFound([&] { return SelectProperty(pBelow, kind, property, pProperty.Put()); },
                          [&] { return ValueOf(pProperty.Get(), text.Put()); },
                          [&] { return CopyText(LocalPart(text.View()), pName); }));
}

HRESULT PrintSchemaHandler::GetOption(const Qname& feature, SchemaNamespace optionSpace, BSTR* pOption,
                                      IXMLDOMNode** ppNode) const {
    if (pOption != nullptr) *pOption = nullptr;
    if (ppNode != nullptr) *ppNode = nullptr;
    if (pOption == nullptr || ppNode == nullptr) return E_POINTER;
    if (feature.localName.empty()) return E_INVALIDARG;

    const std::wstring_view framework = m_frameworkPrefix.View();
    std::wstring query = OptionQuery(feature);
    query.append(L" | ").append(FeatureQuery(feature)).append(L"/").append(framework);
    query.append(L"ScoredProperty[@name = ");
    AppendLiteral(query, GetPrefix(optionSpace) + L"OptionName");
    query.append(L"]/").append(framework).append(L"Value");
    ComPtr<IXMLDOMNode> pNode;
    Bstr option;
    const HRESULT named =
        InOrderWhileFound([&] { return SelectSingleNode(query, pNode.Put()); },
                          [&] {
                              const HRESULT found = GetAttribute(pNode.Get(), L"name", option.Put());
                              return found == S_FALSE ? TypedText(pNode.Get(), option.Put()) : found;
                          });
    if (named != S_OK) return ForFeature(named);
    if (option.Empty()) return E_INVALIDARG;
    *pOption = Bstr(Stripped(option.View(), optionSpace)).Detach();
    *ppNode = pNode.Detach();
    return S_OK;
}

HRESULT PrintSchemaHandler::GetOptionName(const Qname& feature, SchemaNamespace optionSpace,
                                          BSTR* pOption) const {
    ComPtr<IXMLDOMNode> pNode;
    return GetOption(feature, optionSpace, pOption, pNode.Put());
}

}  // namespace base::xps::printschema
