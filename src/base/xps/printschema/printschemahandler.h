#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <string>
#include <string_view>

#include "base/xps/printschema/privateprefix.h"
#include "base/xps/printschema/schemabase.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

namespace base::xps::printschema {

// How an option or a device states a value: as it is, or as one that counts when options are compared.
enum class PropertyKind { Plain, Scored };

// Finds, reads, creates and removes the elements of one loaded print ticket or print capabilities document,
// with the prefixes that the document itself declares on its root. Made for one operation on one document,
// used by one thread.
//
// Names in attributes are compared as text, prefix included: a ticket that binds a second prefix to a
// namespace has other names under it.
//
// Operations that return an HRESULT answer E_POINTER for a null pointer, else the DOM's own code; S_FALSE
// says that there is no such thing. Out-parameters are null after anything but S_OK and otherwise the
// caller's to release. What needs the prefix of a namespace throws what GetPrefix throws, and a failed
// allocation of the operation's own throws std::bad_alloc. A failure leaves the document as it was up to the
// failing DOM call.
class PrintSchemaHandler {
  public:
    // The document is shared with the caller. Throws HresultError: E_PENDING for a null document, E_FAIL when
    // the root is not of the given name in the framework namespace or does not bind that namespace to a
    // prefix, else the DOM's own code. The document's SelectionLanguage and SelectionNamespaces are set.
    PrintSchemaHandler(std::wstring_view rootName, IXMLDOMDocument2* pDocument);
    PrintSchemaHandler(const PrintSchemaHandler&) = delete;
    PrintSchemaHandler& operator=(const PrintSchemaHandler&) = delete;
    virtual ~PrintSchemaHandler() = default;

    // The prefix of the namespace, with its colon. Throws HresultError: E_UNEXPECTED when the document does
    // not declare the keywords namespace or the private prefix is unset, E_INVALIDARG for any other value.
    [[nodiscard]] std::wstring GetPrefix(SchemaNamespace space) const;

    // Takes out of the text the first prefix that is found anywhere in it, tried from the given namespace on.
    // A text without any is left alone. E_INVALIDARG for an empty text.
    [[nodiscard]] HRESULT StripPrefix(BSTR* pText, SchemaNamespace first) const;

    // XPath queries. Those for features and for options and properties in general search the whole document;
    // appended to another query they search below what it finds.
    [[nodiscard]] std::wstring FeatureQuery(const Qname& feature) const;
    [[nodiscard]] std::wstring OptionQuery(const Qname& feature) const;
    [[nodiscard]] std::wstring PropertyQuery(const Qname& property) const;
    [[nodiscard]] std::wstring ScoredPropertyQuery(const Qname& property) const;

    // The first match in document order. E_INVALIDARG for an empty query.
    [[nodiscard]] HRESULT SelectSingleNode(std::wstring_view query, IXMLDOMNode** ppNode) const;
    // All framework elements of the name. E_FAIL for an empty name.
    [[nodiscard]] HRESULT SelectNodes(std::wstring_view elementName, IXMLDOMNodeList** ppList) const;
    // S_FALSE when the node has no such attribute.
    [[nodiscard]] HRESULT GetAttribute(IXMLDOMNode* pNode, std::wstring_view name, BSTR* pValue) const;

    // The text of the Value of the property or parameter that the query finds, or of the parameter that its
    // ParameterRef refers to. E_INVALIDARG for an empty query, E_OUTOFMEMORY when the text cannot be
    // allocated.
    [[nodiscard]] HRESULT GetValue(std::wstring_view query, BSTR* pText) const;
    // The same with HRESULT_FROM_WIN32(ERROR_NOT_FOUND) in the place of S_FALSE. This and all that follows
    // down to the builders throws std::bad_alloc in the place of E_OUTOFMEMORY, the DOM's own included:
    // features go on without a value that is not there, and must not take the one for the other.
    [[nodiscard]] HRESULT ReadValue(std::wstring_view query, BSTR* pText) const;
    // ReadValue as a decimal number, white space round it allowed. HRESULT_FROM_WIN32(ERROR_INVALID_DATA) for
    // a text that is no 32-bit integer; *pValue is then as it was.
    [[nodiscard]] HRESULT ReadInteger(std::wstring_view query, std::int32_t* pValue) const;
    // The same for the first property, or scored property, of the name below a node, at any depth. Below the
    // node that GetOption gave they are the values of the selected option and of no other. A local name is
    // that of a qualified name with any prefix, or a bare word, white space round it allowed.
    [[nodiscard]] HRESULT ReadInteger(IXMLDOMNode* pBelow, PropertyKind kind, const Qname& property,
                                      std::int32_t* pValue) const;
    [[nodiscard]] HRESULT ReadLocalName(IXMLDOMNode* pBelow, PropertyKind kind, const Qname& property,
                                        BSTR* pName) const;

    // The selected option of the feature, without its prefix: the name of its first Option or the Value of
    // its OptionName scored property, whichever comes first in the document. Which prefix that property has
    // is told by the option's namespace; an Option is found under any. HRESULT_FROM_WIN32(ERROR_NOT_FOUND)
    // when there is none. The node is the Option or the Value.
    [[nodiscard]] HRESULT GetOption(const Qname& feature, SchemaNamespace optionSpace, BSTR* pOption,
                                    IXMLDOMNode** ppNode) const;
    [[nodiscard]] HRESULT GetOptionName(const Qname& feature, SchemaNamespace optionSpace,
                                        BSTR* pOption) const;

    // Builders. All elements are the framework's and hang nowhere yet. E_INVALIDARG for an empty name, E_FAIL
    // when the DOM yields nothing. Values are typed "xsd:TYPE" with the document's prefix, on an xsi:type
    // with the document's prefix.
    [[nodiscard]] HRESULT CreateElement(std::wstring_view localName, std::wstring_view namespaceUri,
                                        IXMLDOMElement** ppElement) const;
    // An empty URI makes an attribute without a namespace.
    [[nodiscard]] HRESULT SetAttribute(IXMLDOMElement* pElement, std::wstring_view name,
                                       std::wstring_view namespaceUri, std::wstring_view value) const;
    [[nodiscard]] HRESULT CreateProperty(const Qname& name, IXMLDOMElement** ppProperty) const;
    [[nodiscard]] HRESULT CreatePropertyWithValue(const Qname& name, std::wstring_view type,
                                                  std::wstring_view text, IXMLDOMElement** ppProperty) const;
    [[nodiscard]] HRESULT CreateIntegerProperty(const Qname& name, std::int32_t value,
                                                IXMLDOMElement** ppProperty) const;
    [[nodiscard]] HRESULT CreateScoredProperty(const Qname& name, IXMLDOMElement** ppProperty) const;
    [[nodiscard]] HRESULT CreateScoredPropertyWithValue(const Qname& name, std::wstring_view type,
                                                        std::wstring_view text,
                                                        IXMLDOMElement** ppProperty) const;
    [[nodiscard]] HRESULT CreateIntegerScoredProperty(const Qname& name, std::int32_t value,
                                                      IXMLDOMElement** ppProperty) const;
    // A ParameterRef for the scored property and the ParameterInit for the root; the caller places both. Two
    // standard parameters, the watermark's width and height, are keywords, every other one is private.
    // E_INVALIDARG for an empty name, type or text.
    [[nodiscard]] HRESULT CreateParameter(std::wstring_view name, std::wstring_view type,
                                          std::wstring_view text, IXMLDOMElement** ppReference,
                                          IXMLDOMElement** ppInitializer) const;
    [[nodiscard]] HRESULT CreateIntegerParameter(std::wstring_view name, std::int32_t value,
                                                 IXMLDOMElement** ppReference,
                                                 IXMLDOMElement** ppInitializer) const;
    // The option is the feature's child.
    [[nodiscard]] HRESULT CreateFeatureOption(const Qname& feature, const Qname& option,
                                              IXMLDOMElement** ppFeature, IXMLDOMElement** ppOption) const;

    // Behind the last child of the root.
    [[nodiscard]] HRESULT AppendToRoot(IXMLDOMNode* pNode) const;
    // Every feature of the name, with the ParameterInit elements that its ParameterRef elements name. S_OK
    // when there is nothing to remove.
    [[nodiscard]] HRESULT RemoveFeature(const Qname& feature) const;

  protected:
    // The prefix that the root declares for the URI, with a colon; S_FALSE and an empty text when it declares
    // none. E_FAIL when the first attribute with this value is not a declaration of a prefix. Finds the root
    // only while "psf" is the selection prefix of the framework.
    [[nodiscard]] HRESULT FindPrefix(std::wstring_view uri, BSTR* pPrefix) const;

  private:
    [[nodiscard]] HRESULT Attach();
    [[nodiscard]] HRESULT FindPrefixes();
    [[nodiscard]] HRESULT SelectRoot(IXMLDOMNode** ppRoot) const;

    [[nodiscard]] HRESULT SelectWithPrefix(std::wstring_view prefix) const;
    [[nodiscard]] std::wstring Stripped(std::wstring_view text, SchemaNamespace first) const;
    [[nodiscard]] std::wstring QualifiedName(const Qname& name) const;
    [[nodiscard]] std::wstring ElementName(std::wstring_view localName) const;
    [[nodiscard]] std::wstring NamedElementQuery(std::wstring_view elementName, const Qname& name) const;

    [[nodiscard]] HRESULT SelectBelow(IXMLDOMNode* pContext, std::wstring_view query,
                                      IXMLDOMNode** ppNode) const;
    [[nodiscard]] HRESULT SelectProperty(IXMLDOMNode* pBelow, PropertyKind kind, const Qname& property,
                                         IXMLDOMNode** ppProperty) const;
    // The text of the node's Value, or of the parameter that its ParameterRef refers to.
    [[nodiscard]] HRESULT ValueOf(IXMLDOMNode* pNode, BSTR* pText) const;
    [[nodiscard]] HRESULT GetParameterValue(IXMLDOMNode* pReference, BSTR* pText) const;
    [[nodiscard]] HRESULT FindParameter(std::wstring_view name, IXMLDOMNode** ppParameter) const;

    [[nodiscard]] HRESULT CreateNamed(std::wstring_view elementName, std::wstring_view name,
                                      IXMLDOMElement** ppElement) const;
    [[nodiscard]] HRESULT CreateQualified(std::wstring_view elementName, const Qname& name,
                                          IXMLDOMElement** ppElement) const;
    [[nodiscard]] HRESULT CreateQualifiedWithValue(std::wstring_view elementName, const Qname& name,
                                                   std::wstring_view type, std::wstring_view text,
                                                   IXMLDOMElement** ppElement) const;
    [[nodiscard]] HRESULT AppendValue(IXMLDOMElement* pParent, std::wstring_view type,
                                      std::wstring_view text) const;

    [[nodiscard]] HRESULT RemoveParametersOf(IXMLDOMNode* pFeature) const;
    [[nodiscard]] HRESULT RemoveParameterOf(IXMLDOMNode* pReference) const;
    [[nodiscard]] HRESULT RemoveParameters(std::wstring_view name) const;

    platform::ComPtr<IXMLDOMDocument2> m_pDocument;
    platform::Bstr m_rootName;
    platform::Bstr m_schemaPrefix;
    platform::Bstr m_instancePrefix;
    platform::Bstr m_frameworkPrefix;
    platform::Bstr m_keywordPrefix;
};

class PrintTicketHandler final : public PrintSchemaHandler {
  public:
    explicit PrintTicketHandler(IXMLDOMDocument2* pDocument)
        : PrintSchemaHandler(L"PrintTicket", pDocument) {}
};

class PrintCapabilitiesHandler final : public PrintSchemaHandler {
  public:
    explicit PrintCapabilitiesHandler(IXMLDOMDocument2* pDocument)
        : PrintSchemaHandler(L"PrintCapabilities", pDocument) {}
};

}  // namespace base::xps::printschema
