#include "devkit/msxml/document.h"

#include <utility>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/documentstream.h"
#include "devkit/msxml/domdocument.h"
#include "devkit/msxml/domimplementation.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/loading.h"
#include "devkit/msxml/nodefactory.h"
#include "devkit/msxml/parseerror.h"
#include "devkit/msxml/saving.h"
#include "devkit/msxml/selectedlist.h"
#include "devkit/msxml/xpathtree.h"

namespace devkit::msxml {

namespace {

// Gives a new node to the caller through the interface of its kind.
template <typename Interface, typename Make>
HRESULT Create(Interface** ppNode, Make&& make) noexcept {
    if (ppNode == nullptr) return E_INVALIDARG;
    *ppNode = nullptr;
    return Guarded([&] {
        const NodeRef pNode = make();
        *ppNode = static_cast<Interface*>(pNode->AsDomNode());
        (*ppNode)->AddRef();
        return S_OK;
    });
}

HRESULT ReturnFlag(bool flag, VARIANT_BOOL* pFlag) noexcept {
    if (pFlag == nullptr) return E_INVALIDARG;
    *pFlag = flag ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

HRESULT SetFlag(bool& target, VARIANT_BOOL flag) noexcept {
    target = flag != VARIANT_FALSE;
    return S_OK;
}

template <typename Interface>
HRESULT NotOffered(Interface** ppOut) noexcept {
    if (ppOut == nullptr) return E_INVALIDARG;
    *ppOut = nullptr;
    return E_NOTIMPL;
}

}  // namespace

// The base only keeps the address of the document, which is known before the document is made.
Document::Document() noexcept : NodeObject(NODE_DOCUMENT, *this, nullptr), m_persistence(*this) {}

Document::~Document() = default;

Node* Document::RootElement() const noexcept {
    Node* pNode = Children().pFirst;
    while (pNode != nullptr && pNode->Type() != NODE_ELEMENT) pNode = pNode->Next();
    return pNode;
}

Node* Document::Declaration() const noexcept {
    Node* const pFirst = Children().pFirst;
    return pFirst != nullptr && IsXmlDeclaration(*pFirst) ? pFirst : nullptr;
}

HRESULT Document::QueryInterface(REFIID iid, void** ppObject) {
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    if (iid == __uuidof(IStream)) {
        return Guarded([&] { return DocumentStream::Create(*this, reinterpret_cast<IStream**>(ppObject)); });
    }
    if (!IsOneOf<IPersistStream, IPersistStreamInit>(iid)) return NodeObject::QueryInterface(iid, ppObject);
    *ppObject = static_cast<IPersistStreamInit*>(&m_persistence);
    AddRef();
    return S_OK;
}

HRESULT Document::get_doctype(IXMLDOMDocumentType** ppType) {
    if (ppType == nullptr) return E_INVALIDARG;
    *ppType = nullptr;
    return S_FALSE;
}

HRESULT Document::get_implementation(IXMLDOMImplementation** ppImplementation) {
    if (ppImplementation == nullptr) return E_INVALIDARG;
    *ppImplementation = nullptr;
    return Guarded([&] { return ReturnNew<IXMLDOMImplementation>(new DomImplementation, ppImplementation); });
}

HRESULT Document::get_documentElement(IXMLDOMElement** ppElement) {
    if (ppElement == nullptr) return E_INVALIDARG;
    *ppElement = nullptr;
    Node* const pRoot = RootElement();
    if (pRoot == nullptr) return S_FALSE;
    return pRoot->AsDomNode()->QueryInterface(__uuidof(IXMLDOMElement), reinterpret_cast<void**>(ppElement));
}

HRESULT Document::putref_documentElement(IXMLDOMElement* pElement) {
    if (pElement == nullptr) return E_INVALIDARG;
    Node* const pRoot = RootElement();
    if (pRoot == nullptr) return AppendChild(*this, pElement, nullptr);
    return ReplaceChild(*this, pElement, pRoot->AsDomNode(), nullptr);
}

HRESULT Document::createElement(BSTR name, IXMLDOMElement** ppElement) {
    return Create(ppElement, [&] { return MakeNamedNode(*this, NODE_ELEMENT, View(name), {}); });
}

HRESULT Document::createDocumentFragment(IXMLDOMDocumentFragment** ppFragment) {
    return Create(ppFragment, [&] { return MakeFragment(*this); });
}

HRESULT Document::createTextNode(BSTR data, IXMLDOMText** ppText) {
    return Create(ppText, [&] { return MakeText(*this, std::wstring(View(data))); });
}

HRESULT Document::createComment(BSTR data, IXMLDOMComment** ppComment) {
    return Create(ppComment, [&] { return MakeComment(*this, std::wstring(View(data))); });
}

HRESULT Document::createCDATASection(BSTR data, IXMLDOMCDATASection** ppSection) {
    return Create(ppSection, [&] { return MakeCdataSection(*this, std::wstring(View(data))); });
}

HRESULT Document::createProcessingInstruction(BSTR target, BSTR data, IXMLDOMProcessingInstruction** ppNode) {
    return Create(
        ppNode, [&] { return MakeInstruction(*this, ValidTarget(View(target)), std::wstring(View(data))); });
}

HRESULT Document::createAttribute(BSTR name, IXMLDOMAttribute** ppAttribute) {
    return Create(ppAttribute, [&] { return MakeNamedNode(*this, NODE_ATTRIBUTE, View(name), {}); });
}

HRESULT Document::createEntityReference(BSTR name, IXMLDOMEntityReference** ppNode) {
    return Create(ppNode, [&] { return MakeEntityReference(*this, ValidTarget(View(name))); });
}

HRESULT Document::createNode(VARIANT type, BSTR name, BSTR uri, IXMLDOMNode** ppNode) {
    return Create(ppNode, [&] { return MakeNamedNode(*this, NodeTypeOf(type), View(name), View(uri)); });
}

HRESULT Document::getElementsByTagName(BSTR name, IXMLDOMNodeList** ppList) {
    return GetElementsByTagName(*this, name, ppList);
}

HRESULT Document::nodeFromID(BSTR, IXMLDOMNode** ppNode) { return ReturnNoNode(ppNode); }

HRESULT Document::load(VARIANT source, VARIANT_BOOL* pSuccess) { return Load(*this, source, pSuccess); }

HRESULT Document::loadXML(BSTR text, VARIANT_BOOL* pSuccess) { return LoadText(*this, View(text), pSuccess); }

HRESULT Document::save(VARIANT destination) { return Save(*this, destination); }

// Every load is done when it returns.
HRESULT Document::abort() { return S_OK; }

HRESULT Document::get_readyState(long* pState) {
    constexpr long complete = 4;
    if (pState == nullptr) return E_INVALIDARG;
    *pState = complete;
    return S_OK;
}

HRESULT Document::get_parseError(IXMLDOMParseError** ppError) {
    if (ppError == nullptr) return E_INVALIDARG;
    *ppError = nullptr;
    return Guarded([&] { return ReturnNew<IXMLDOMParseError>(new ParseError(m_failure), ppError); });
}

HRESULT Document::get_url(BSTR* pUrl) { return m_url.empty() ? ReturnNoText(pUrl) : ReturnText(m_url, pUrl); }

HRESULT Document::get_async(VARIANT_BOOL* pFlag) { return ReturnFlag(m_settings.async, pFlag); }
HRESULT Document::put_async(VARIANT_BOOL flag) { return SetFlag(m_settings.async, flag); }
HRESULT Document::get_validateOnParse(VARIANT_BOOL* pFlag) {
    return ReturnFlag(m_settings.validateOnParse, pFlag);
}
HRESULT Document::put_validateOnParse(VARIANT_BOOL flag) { return SetFlag(m_settings.validateOnParse, flag); }
HRESULT Document::get_resolveExternals(VARIANT_BOOL* pFlag) {
    return ReturnFlag(m_settings.resolveExternals, pFlag);
}
HRESULT Document::put_resolveExternals(VARIANT_BOOL flag) {
    return SetFlag(m_settings.resolveExternals, flag);
}
HRESULT Document::get_preserveWhiteSpace(VARIANT_BOOL* pFlag) {
    return ReturnFlag(m_settings.preserveWhiteSpace, pFlag);
}
HRESULT Document::put_preserveWhiteSpace(VARIANT_BOOL flag) {
    return SetFlag(m_settings.preserveWhiteSpace, flag);
}
HRESULT Document::setProperty(BSTR name, VARIANT value) { return m_settings.SetProperty(View(name), value); }
HRESULT Document::getProperty(BSTR name, VARIANT* pValue) {
    return m_settings.GetProperty(View(name), pValue);
}

HRESULT Document::put_onreadystatechange(VARIANT) { return E_NOTIMPL; }
HRESULT Document::put_ondataavailable(VARIANT) { return E_NOTIMPL; }
HRESULT Document::put_ontransformnode(VARIANT) { return E_NOTIMPL; }
HRESULT Document::get_namespaces(IXMLDOMSchemaCollection** ppCollection) { return NotOffered(ppCollection); }
HRESULT Document::get_schemas(VARIANT* pCollection) {
    return ReturnNoText(pCollection) == S_FALSE ? E_NOTIMPL : E_INVALIDARG;
}
HRESULT Document::putref_schemas(VARIANT) { return E_NOTIMPL; }
HRESULT Document::validate(IXMLDOMParseError** ppError) { return NotOffered(ppError); }

HRESULT CreateDomDocument(REFIID iid, void** ppDocument) noexcept {
    if (ppDocument == nullptr) return E_POINTER;
    *ppDocument = nullptr;
    return Guarded([&] {
        const platform::ComPtr<Document> pDocument(new Document);
        return pDocument->QueryInterface(iid, ppDocument);
    });
}

}  // namespace devkit::msxml
