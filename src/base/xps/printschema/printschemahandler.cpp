#include "base/xps/printschema/printschemahandler.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/logging/check.h"
#include "base/logging/exceptions.h"
#include "platform/inorder.h"
#include "platform/variant.h"

namespace base::xps::printschema {

using platform::Bstr;
using platform::ComPtr;
using platform::InOrder;
using platform::Variant;
using platform::Yielded;

namespace {

constexpr auto kLastNamespace = static_cast<std::uint32_t>(SchemaNamespace::Fallback);

[[nodiscard]] HRESULT SetProperty(IXMLDOMDocument2* pDocument, std::wstring_view name,
                                  std::wstring_view value) {
    return pDocument->setProperty(Bstr(name).Get(), Variant(value).Get());
}

// An attribute of the root, which may be the declaration of a prefix.
struct RootAttribute {
    std::wstring name;
    std::wstring value;
};

[[nodiscard]] HRESULT ReadAttribute(IXMLDOMNode* pAttribute, RootAttribute& attribute) {
    Bstr name;
    Variant value;
    return InOrder([&] { return pAttribute->get_nodeName(name.Put()); },
                   [&] { return pAttribute->get_nodeValue(value.Put()); },
                   [&] {
                       const BSTR text = value.Text();
                       attribute = {std::wstring(name.View()), std::wstring(text, SysStringLen(text))};
                       return S_OK;
                   });
}

// The last answer of the walk, S_FALSE at its end.
[[nodiscard]] HRESULT ReadAttributes(IXMLDOMNode* pElement, std::vector<RootAttribute>& attributes) {
    ComPtr<IXMLDOMNamedNodeMap> pMap;
    const HRESULT mapped = Yielded(pElement->get_attributes(pMap.Put()), pMap);
    if (mapped != S_OK) return mapped;
    const HRESULT reset = pMap->reset();
    if (FAILED(reset)) return reset;
    for (;;) {
        ComPtr<IXMLDOMNode> pAttribute;
        const HRESULT walked = Yielded(pMap->nextNode(pAttribute.Put()), pAttribute);
        if (walked != S_OK) return walked;
        const HRESULT read = ReadAttribute(pAttribute.Get(), attributes.emplace_back());
        if (FAILED(read)) return read;
    }
}

// S_FALSE when no attribute has the value.
[[nodiscard]] HRESULT PrefixFor(std::wstring_view uri, const std::vector<RootAttribute>& attributes,
                                BSTR* pPrefix) {
    constexpr std::wstring_view kDeclaration = L"xmlns:";
    const auto found = std::ranges::find(attributes, uri, &RootAttribute::value);
    if (found == attributes.end()) return S_FALSE;
    if (!found->name.starts_with(kDeclaration) || found->name == kDeclaration) return E_FAIL;
    *pPrefix = Bstr(found->name.substr(kDeclaration.size()) + L':').Detach();
    return S_OK;
}

}  // namespace

PrintSchemaHandler::PrintSchemaHandler(std::wstring_view rootName, IXMLDOMDocument2* pDocument)
    : m_pDocument(pDocument), m_rootName(rootName) {
    HRESULT attached = S_OK;
    try {
        attached = Attach();
    } catch (const exception::CXDException& failure) {
        attached = failure.GetHresult();
    }
    logging::ThrowIfFailed(attached);
}

HRESULT PrintSchemaHandler::Attach() {
    if (!m_pDocument) return E_PENDING;
    return InOrder(
        [this] { return SetProperty(m_pDocument.Get(), L"SelectionLanguage", L"XPath"); },
        [this] { return SelectWithPrefix(L"psf"); }, [this] { return FindPrefixes(); },
        [this] {
            EnsurePrivatePrefix();
            const std::wstring_view framework = m_frameworkPrefix.View();
            if (framework.empty()) return E_FAIL;
            // Nearly every ticket has the prefix that the root was looked for with.
            return framework == L"psf:" ? S_OK : SelectWithPrefix(framework.substr(0, framework.size() - 1));
        });
}

HRESULT PrintSchemaHandler::FindPrefixes() {
    std::vector<RootAttribute> attributes;
    const auto find = [&](std::wstring_view uri, Bstr& prefix) {
        return [&, uri] { return PrefixFor(uri, attributes, prefix.Put()); };
    };
    ComPtr<IXMLDOMNode> pRoot;
    const HRESULT found = SelectRoot(pRoot.Put());
    if (found != S_OK) return found;
    return InOrder([&] { return ReadAttributes(pRoot.Get(), attributes); },
                   find(kFrameworkNamespace, m_frameworkPrefix), find(kKeywordsNamespace, m_keywordPrefix),
                   find(kXmlSchemaInstanceNamespace, m_instancePrefix),
                   find(kXmlSchemaNamespace, m_schemaPrefix));
}

HRESULT PrintSchemaHandler::SelectRoot(IXMLDOMNode** ppRoot) const {
    return SelectSingleNode(L"//psf:" + std::wstring(m_rootName.View()), ppRoot);
}

HRESULT PrintSchemaHandler::SelectWithPrefix(std::wstring_view prefix) const {
    return SetProperty(m_pDocument.Get(), L"SelectionNamespaces",
                       L"xmlns:" + std::wstring(prefix) + L"='" + kFrameworkNamespace + L"'");
}

HRESULT PrintSchemaHandler::FindPrefix(std::wstring_view uri, BSTR* pPrefix) const {
    if (pPrefix == nullptr) return E_POINTER;
    *pPrefix = nullptr;
    if (uri.empty()) return E_INVALIDARG;
    ComPtr<IXMLDOMNode> pRoot;
    const HRESULT found = SelectRoot(pRoot.Put());
    if (found != S_OK) return found;
    std::vector<RootAttribute> attributes;
    return InOrder([&] { return ReadAttributes(pRoot.Get(), attributes); },
                   [&] { return PrefixFor(uri, attributes, pPrefix); });
}

std::wstring PrintSchemaHandler::GetPrefix(SchemaNamespace space) const {
    std::wstring privatePrefix = PrivatePrefix();
    if (m_frameworkPrefix.Empty() || m_keywordPrefix.Empty() || privatePrefix.empty())
        logging::ThrowHresult(E_UNEXPECTED);
    switch (space) {
        case SchemaNamespace::Keywords:
            return std::wstring(m_keywordPrefix.View());
        case SchemaNamespace::Framework:
            return std::wstring(m_frameworkPrefix.View());
        case SchemaNamespace::Private:
            return privatePrefix;
        case SchemaNamespace::Fallback:
            return kFallbackPrefix;
    }
    logging::ThrowHresult(E_INVALIDARG);
}

HRESULT PrintSchemaHandler::StripPrefix(BSTR* pText, SchemaNamespace first) const {
    if (pText == nullptr) return E_POINTER;
    if (SysStringLen(*pText) == 0) return E_INVALIDARG;
    Bstr stripped(Stripped({*pText, SysStringLen(*pText)}, first));
    const Bstr whole = Bstr::Adopt(std::exchange(*pText, stripped.Detach()));
    return S_OK;
}

std::wstring PrintSchemaHandler::Stripped(std::wstring_view text, SchemaNamespace first) const {
    std::wstring stripped(text);
    for (auto index = static_cast<std::uint32_t>(first); index <= kLastNamespace; ++index) {
        const std::wstring prefix = GetPrefix(SchemaNamespace{index});
        const std::size_t found = stripped.find(prefix);
        if (found != std::wstring::npos) return stripped.erase(found, prefix.size());
    }
    return stripped;
}

std::wstring PrintSchemaHandler::QualifiedName(const Qname& name) const {
    return GetPrefix(name.space) + name.localName;
}

std::wstring PrintSchemaHandler::ElementName(std::wstring_view localName) const {
    return std::wstring(m_frameworkPrefix.View()).append(localName);
}

}  // namespace base::xps::printschema
