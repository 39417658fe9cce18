#pragma once

#include "devkit/msxml/com/domstate.h"
#include "devkit/msxml/com/nodeobject.h"

namespace devkit::msxml {

// The document: root of its tree, and the object that stands for it.
class DomDocument final : public DomState, public NodeObject<IXMLDOMDocument2, IXMLDOMDocument> {
  public:
    DomDocument() noexcept;

    void Present(Node& node) noexcept override;

    // IStream: each call gives a stream of its own on the document, see DocumentStream.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;

    HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode** ppCopy) override;

    HRESULT STDMETHODCALLTYPE get_doctype(IXMLDOMDocumentType** ppType) override;
    HRESULT STDMETHODCALLTYPE get_implementation(IXMLDOMImplementation** ppImplementation) override;
    HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** ppElement) override;
    HRESULT STDMETHODCALLTYPE putref_documentElement(IXMLDOMElement* pElement) override;

    HRESULT STDMETHODCALLTYPE createElement(BSTR name, IXMLDOMElement** ppElement) override;
    HRESULT STDMETHODCALLTYPE createDocumentFragment(IXMLDOMDocumentFragment** ppFragment) override;
    HRESULT STDMETHODCALLTYPE createTextNode(BSTR data, IXMLDOMText** ppText) override;
    HRESULT STDMETHODCALLTYPE createComment(BSTR data, IXMLDOMComment** ppComment) override;
    HRESULT STDMETHODCALLTYPE createCDATASection(BSTR data, IXMLDOMCDATASection** ppSection) override;
    HRESULT STDMETHODCALLTYPE createProcessingInstruction(BSTR target, BSTR data,
                                                          IXMLDOMProcessingInstruction** ppNode) override;
    HRESULT STDMETHODCALLTYPE createAttribute(BSTR name, IXMLDOMAttribute** ppAttribute) override;
    HRESULT STDMETHODCALLTYPE createEntityReference(BSTR name, IXMLDOMEntityReference** ppNode) override;
    HRESULT STDMETHODCALLTYPE createNode(VARIANT type, BSTR name, BSTR uri, IXMLDOMNode** ppNode) override;

    HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR name, IXMLDOMNodeList** ppList) override;
    // There are no attributes of type ID without a DTD: S_FALSE and null.
    HRESULT STDMETHODCALLTYPE nodeFromID(BSTR id, IXMLDOMNode** ppNode) override;

    HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL* pSuccess) override;
    HRESULT STDMETHODCALLTYPE loadXML(BSTR text, VARIANT_BOOL* pSuccess) override;
    HRESULT STDMETHODCALLTYPE save(VARIANT destination) override;
    HRESULT STDMETHODCALLTYPE abort() override;
    HRESULT STDMETHODCALLTYPE get_readyState(long* pState) override;
    HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** ppError) override;
    HRESULT STDMETHODCALLTYPE get_url(BSTR* pUrl) override;

    HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL* pFlag) override;
    HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL flag) override;
    HRESULT STDMETHODCALLTYPE get_validateOnParse(VARIANT_BOOL* pFlag) override;
    HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL flag) override;
    HRESULT STDMETHODCALLTYPE get_resolveExternals(VARIANT_BOOL* pFlag) override;
    HRESULT STDMETHODCALLTYPE put_resolveExternals(VARIANT_BOOL flag) override;
    HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL* pFlag) override;
    HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL flag) override;
    HRESULT STDMETHODCALLTYPE setProperty(BSTR name, VARIANT value) override;
    HRESULT STDMETHODCALLTYPE getProperty(BSTR name, VARIANT* pValue) override;

    // Events and schemas are not offered: E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE put_onreadystatechange(VARIANT sink) override;
    HRESULT STDMETHODCALLTYPE put_ondataavailable(VARIANT sink) override;
    HRESULT STDMETHODCALLTYPE put_ontransformnode(VARIANT sink) override;
    HRESULT STDMETHODCALLTYPE get_namespaces(IXMLDOMSchemaCollection** ppCollection) override;
    HRESULT STDMETHODCALLTYPE get_schemas(VARIANT* pCollection) override;
    HRESULT STDMETHODCALLTYPE putref_schemas(VARIANT collection) override;
    HRESULT STDMETHODCALLTYPE validate(IXMLDOMParseError** ppError) override;
};

}  // namespace devkit::msxml
