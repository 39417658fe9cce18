#include "base/xps/printschema/printschemahandler.h"

#include <utility>

#include "base/logging/check.h"
#include "base/logging/exceptions.h"
#include "base/xps/printschema/namespaces.h"
#include "platform/variant.h"

namespace base::xps::printschema {

using exception::CXDException;
using platform::Bstr;
using platform::ComPtr;
using platform::Variant;

namespace {

constexpr auto LastNamespace = static_cast<std::uint32_t>(SchemaNamespace::Fallback);

void Require(HRESULT hr) {
    if (FAILED(hr)) throw CXDException(hr);
}

[[nodiscard]] HRESULT SetProperty(IXMLDOMDocument2* pDocument, std::wstring_view name,
                                  std::wstring_view value) {
    return pDocument->setProperty(Bstr(name).Get(), Variant(value).Get());
}

// The text between "xmlns:" and the end of a declaration's name, with a colon.
[[nodiscard]] HRESULT PrefixOfDeclaration(IXMLDOMNode* pAttribute, BSTR* pPrefix) {
    constexpr std::wstring_view xmlns = L"xmlns:";
    Bstr name;
    const HRESULT named = pAttribute->get_nodeName(name.Put());
    if (FAILED(named)) return named;
    if (!name.View().starts_with(xmlns) || name.View() == xmlns) return E_FAIL;
    *pPrefix = Bstr(std::wstring(name.View().substr(xmlns.size())) + L':').Detach();
    return S_OK;
}

}  // namespace

PrintSchemaHandler::PrintSchemaHandler(std::wstring_view rootName, IXMLDOMDocument2* pDocument)
    : m_pDocument(pDocument), m_rootName(rootName) {
    HRESULT attached = S_OK;
    try {
        Attach();
    } catch (const CXDException& failure) {
        attached = failure.GetHresult();
    }
    logging::ThrowIfFailed(attached);
}

void PrintSchemaHandler::Attach() {
    if (!m_pDocument) throw CXDException(E_PENDING);
    Require(SetProperty(m_pDocument.Get(), L"SelectionLanguage", L"XPath"));
    Require(SelectWithPrefix(L"psf"));
    FindPrefixes();
    EnsurePrivatePrefix();
    const std::wstring_view framework = m_frameworkPrefix.View();
    if (framework.empty()) throw CXDException(E_FAIL);
    Require(SelectWithPrefix(framework.substr(0, framework.size() - 1)));
}

void PrintSchemaHandler::FindPrefixes() {
    Require(FindPrefix(kFrameworkNamespace, m_frameworkPrefix.Put()));
    Require(FindPrefix(kKeywordsNamespace, m_keywordPrefix.Put()));
    Require(FindPrefix(kXmlSchemaInstanceNamespace, m_instancePrefix.Put()));
    Require(FindPrefix(kXmlSchemaNamespace, m_schemaPrefix.Put()));
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
    const HRESULT selected = SelectSingleNode(L"//psf:" + std::wstring(m_rootName.View()), pRoot.Put());
    if (selected != S_OK) return selected;
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    const HRESULT mapped = pRoot->get_attributes(pAttributes.Put());
    if (mapped != S_OK) return mapped;
    const HRESULT reset = pAttributes->reset();
    if (FAILED(reset)) return reset;

    for (;;) {
        ComPtr<IXMLDOMNode> pAttribute;
        const HRESULT walked = pAttributes->nextNode(pAttribute.Put());
        if (walked != S_OK) return walked;
        Variant value;
        const HRESULT read = pAttribute->get_nodeValue(value.Put());
        if (FAILED(read)) return read;
        const BSTR text = value.Text();
        if (std::wstring_view(text, SysStringLen(text)) == uri)
            return PrefixOfDeclaration(pAttribute.Get(), pPrefix);
    }
}

std::wstring PrintSchemaHandler::GetPrefix(SchemaNamespace space) const {
    const std::wstring privatePrefix = PrivatePrefix();
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
    for (auto index = static_cast<std::uint32_t>(first); index <= LastNamespace; ++index) {
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
