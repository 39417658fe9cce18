#include "devkit/msxml/com/document.h"

#include <new>
#include <type_traits>

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/documentparts.h"
#include "devkit/msxml/com/documentstream.h"
#include "devkit/msxml/com/domdocument.h"
#include "devkit/msxml/com/elementobject.h"
#include "devkit/msxml/com/leafobjects.h"
#include "devkit/msxml/com/loading.h"
#include "devkit/msxml/com/saving.h"
#include "devkit/msxml/tree/attributes.h"
#include "devkit/msxml/tree/cloning.h"
#include "devkit/msxml/tree/data.h"

namespace devkit::msxml {

namespace {

constexpr Kind kMadeKinds[] = {Kind::Element,         Kind::Attribute, Kind::Text,     Kind::CdataSection,
                               Kind::EntityReference, Kind::Comment,   Kind::Fragment, Kind::Instruction};

// Puts the object into the node's room. The interface of a node's object starts where the object does.
template <typename Object>
void Show(Node& node) noexcept {
    static_assert(sizeof(Object) <= sizeof node.facade.room && alignof(Object) <= alignof(void*));
    static_assert(std::is_trivially_destructible_v<Object>);
    node.facade.pObject = static_cast<IXMLDOMNode*>(new (node.facade.room) Object(node));
}

// The kind that a VARIANT names by number or by nodeTypeString. Throws common::HresultError with E_INVALIDARG
// for one that cannot be made so (documents, DTD parts).
Kind KindOf(const VARIANT& type) {
    const bool isName = type.vt == VT_BSTR;
    platform::Variant number;
    const bool isNumber = Guarded([&] {
                              Convert(type, VT_I4, number);
                              return S_OK;
                          }) == S_OK;
    for (const Kind kind : kMadeKinds) {
        if (isName && TypeNameOf(kind) == View(type.bstrVal)) return kind;
        if (isNumber && number.Get().lVal == static_cast<long>(kind)) return kind;
    }
    throw common::HresultError(E_INVALIDARG);
}

NodeRef MakeInstruction(Document& document, std::wstring_view target, std::wstring_view data) {
    if (target == L"xml") return MakeDeclaration(document, data);
    return MakeNode(Kind::Instruction, document, ValidTarget(target), std::wstring(data));
}

// createNode. The name counts for elements, attributes, processing instructions and entity references, the
// URI for the first two.
NodeRef MakeNamedNode(Document& document, Kind kind, std::wstring_view name, std::wstring_view uri) {
    switch (kind) {
        case Kind::Attribute:
            if (name == L"xmlns") return MakeNode(kind, document, MadeDefaultDeclaration());
            [[fallthrough]];
        case Kind::Element:
            return MakeNode(kind, document, ValidName(name, uri));
        case Kind::Instruction:
            return MakeInstruction(document, name, name == L"xml" ? L"version=\"1.0\"" : L"");
        case Kind::EntityReference:
            return MakeNode(kind, document, ValidTarget(name));
        default:
            return MakeNode(kind, document, nullptr);
    }
}

// Gives a new node to the caller through the interface of its kind.
template <typename Interface, typename Make>
HRESULT Create(Interface** ppNode, Make&& make) noexcept {
    return Answer(ppNode, [&] { return ReturnNode(make().Get(), ppNode); });
}

HRESULT SetFlag(bool& target, VARIANT_BOOL flag) noexcept {
    target = flag != VARIANT_FALSE;
    return S_OK;
}

}  // namespace

DomDocument::DomDocument() noexcept : NodeObject(static_cast<Node&>(*this)) {
    facade.pObject = static_cast<IXMLDOMNode*>(this);
}

void DomDocument::Present(Node& node) noexcept {
    switch (node.What()) {
        case Kind::Element:
            return Show<ElementObject>(node);
        case Kind::Attribute:
            return Show<AttributeObject>(node);
        case Kind::Text:
            return Show<TextObject>(node);
        case Kind::CdataSection:
            return Show<CdataObject>(node);
        case Kind::Comment:
            return Show<CommentObject>(node);
        case Kind::Instruction:
            return Show<InstructionObject>(node);
        case Kind::EntityReference:
            return Show<EntityReferenceObject>(node);
        case Kind::Fragment:
            return Show<FragmentObject>(node);
        case Kind::Document:
            return;
    }
}

HRESULT DomDocument::QueryInterface(REFIID iid, void** ppObject) {
    if (ppObject == nullptr || iid != __uuidof(IStream)) return NodeObject::QueryInterface(iid, ppObject);
    return Answer(ppObject, [&] {
        *ppObject = static_cast<IStream*>(new DocumentStream(*this, static_cast<IXMLDOMNode&>(*this)));
        return S_OK;
    });
}

HRESULT DomDocument::cloneNode(VARIANT_BOOL deep, IXMLDOMNode** ppCopy) {
    return Answer(ppCopy, [&] {
        auto* const pDocument = new DomDocument;
        const NodeRef pCopy(pDocument);
        pDocument->preservesWhiteSpace = preservesWhiteSpace;
        pDocument->settings = settings;
        pDocument->selector.namespaces = selector.namespaces;
        if (deep != VARIANT_FALSE) CopyChildren(*this, *pCopy);
        return ReturnNode(pCopy.Get(), ppCopy);
    });
}

HRESULT DomDocument::get_doctype(IXMLDOMDocumentType** ppType) {
    return Answer(ppType, [] { return S_FALSE; });
}

HRESULT DomDocument::get_implementation(IXMLDOMImplementation** ppImplementation) {
    return Answer(ppImplementation, [&] { return ReturnNew<DomImplementation>(ppImplementation); });
}

HRESULT DomDocument::get_documentElement(IXMLDOMElement** ppElement) {
    return Answer(ppElement, [&] { return ReturnNode(RootElement(), ppElement); });
}

HRESULT DomDocument::putref_documentElement(IXMLDOMElement* pElement) {
    if (pElement == nullptr) return E_INVALIDARG;
    Node* const pRoot = RootElement();
    if (pRoot == nullptr) return AppendChild(*this, pElement, nullptr);
    return ReplaceChild(*this, pElement, DomNodeOf(*pRoot), nullptr);
}

HRESULT DomDocument::createElement(BSTR name, IXMLDOMElement** ppElement) {
    if (name == nullptr) return E_INVALIDARG;
    return Create(ppElement, [&] { return MakeNamedNode(*this, Kind::Element, ViewToNull(name), {}); });
}

HRESULT DomDocument::createDocumentFragment(IXMLDOMDocumentFragment** ppFragment) {
    return Create(ppFragment, [&] { return MakeNode(Kind::Fragment, *this, nullptr); });
}

HRESULT DomDocument::createTextNode(BSTR data, IXMLDOMText** ppText) {
    return Create(ppText, [&] { return MakeNode(Kind::Text, *this, nullptr, std::wstring(View(data))); });
}

HRESULT DomDocument::createComment(BSTR data, IXMLDOMComment** ppComment) {
    return Create(ppComment,
                  [&] { return MakeNode(Kind::Comment, *this, nullptr, std::wstring(View(data))); });
}

HRESULT DomDocument::createCDATASection(BSTR data, IXMLDOMCDATASection** ppSection) {
    return Create(ppSection,
                  [&] { return MakeNode(Kind::CdataSection, *this, nullptr, std::wstring(View(data))); });
}

HRESULT DomDocument::createProcessingInstruction(BSTR target, BSTR data,
                                                 IXMLDOMProcessingInstruction** ppNode) {
    return Create(ppNode, [&] { return MakeInstruction(*this, ViewToNull(target), View(data)); });
}

HRESULT DomDocument::createAttribute(BSTR name, IXMLDOMAttribute** ppAttribute) {
    if (name == nullptr) return E_INVALIDARG;
    return Create(ppAttribute,
                  [&] { return MakeNode(Kind::Attribute, *this, ValidName(ViewToNull(name), {})); });
}

HRESULT DomDocument::createEntityReference(BSTR name, IXMLDOMEntityReference** ppNode) {
    return Create(ppNode, [&] { return MakeNamedNode(*this, Kind::EntityReference, ViewToNull(name), {}); });
}

HRESULT DomDocument::createNode(VARIANT type, BSTR name, BSTR uri, IXMLDOMNode** ppNode) {
    return Create(ppNode,
                  [&] { return MakeNamedNode(*this, KindOf(type), ViewToNull(name), ViewToNull(uri)); });
}

HRESULT DomDocument::getElementsByTagName(BSTR name, IXMLDOMNodeList** ppList) {
    return GetElementsByTagName(*this, name, ppList);
}

HRESULT DomDocument::nodeFromID(BSTR, IXMLDOMNode** ppNode) { return ReturnNoNode(ppNode); }

HRESULT DomDocument::load(VARIANT source, VARIANT_BOOL* pSuccess) { return Load(*this, source, pSuccess); }

HRESULT DomDocument::loadXML(BSTR text, VARIANT_BOOL* pSuccess) {
    return LoadText(*this, ViewToNull(text), pSuccess);
}

HRESULT DomDocument::save(VARIANT destination) { return Save(*this, destination); }

// Every load is done when it returns.
HRESULT DomDocument::abort() { return S_OK; }

HRESULT DomDocument::get_readyState(long* pState) {
    constexpr long kComplete = 4;
    return ReturnNumber(kComplete, pState);
}

HRESULT DomDocument::get_parseError(IXMLDOMParseError** ppError) {
    return Answer(ppError, [&] { return ReturnNew<ParseError>(ppError, failure); });
}

HRESULT DomDocument::get_url(BSTR* pUrl) { return ReturnNoText(pUrl); }

HRESULT DomDocument::get_async(VARIANT_BOOL* pFlag) { return ReturnFlag(settings.async, pFlag); }

HRESULT DomDocument::put_async(VARIANT_BOOL flag) { return SetFlag(settings.async, flag); }

HRESULT DomDocument::get_validateOnParse(VARIANT_BOOL* pFlag) {
    return ReturnFlag(settings.validateOnParse, pFlag);
}

HRESULT DomDocument::put_validateOnParse(VARIANT_BOOL flag) {
    return SetFlag(settings.validateOnParse, flag);
}

HRESULT DomDocument::get_resolveExternals(VARIANT_BOOL* pFlag) {
    return ReturnFlag(settings.resolveExternals, pFlag);
}

HRESULT DomDocument::put_resolveExternals(VARIANT_BOOL flag) {
    return SetFlag(settings.resolveExternals, flag);
}

HRESULT DomDocument::get_preserveWhiteSpace(VARIANT_BOOL* pFlag) {
    return ReturnFlag(preservesWhiteSpace, pFlag);
}

HRESULT DomDocument::put_preserveWhiteSpace(VARIANT_BOOL flag) { return SetFlag(preservesWhiteSpace, flag); }

HRESULT DomDocument::setProperty(BSTR name, VARIANT value) {
    return Guarded([&] {
        SetProperty(settings, selector, View(name), value);
        return S_OK;
    });
}

HRESULT DomDocument::getProperty(BSTR name, VARIANT* pValue) {
    return GetProperty(settings, View(name), pValue);
}

HRESULT DomDocument::put_onreadystatechange(VARIANT) { return E_NOTIMPL; }

HRESULT DomDocument::put_ondataavailable(VARIANT) { return E_NOTIMPL; }

HRESULT DomDocument::put_ontransformnode(VARIANT) { return E_NOTIMPL; }

HRESULT DomDocument::get_namespaces(IXMLDOMSchemaCollection** ppCollection) {
    return NotOffered(ppCollection);
}

HRESULT DomDocument::get_schemas(VARIANT* pCollection) {
    return ReturnNoText(pCollection) == S_FALSE ? E_NOTIMPL : E_INVALIDARG;
}

HRESULT DomDocument::putref_schemas(VARIANT) { return E_NOTIMPL; }

HRESULT DomDocument::validate(IXMLDOMParseError** ppError) { return NotOffered(ppError); }

HRESULT CreateDomDocument(REFIID iid, void** ppDocument) noexcept {
    if (ppDocument == nullptr) return E_POINTER;
    *ppDocument = nullptr;
    return Guarded([&] {
        auto* const pDocument = new DomDocument;  // NOLINT(bugprone-unhandled-exception-at-new): Guarded
        const NodeRef keep(pDocument);
        return pDocument->QueryInterface(iid, ppDocument);
    });
}

long LiveObjectCount() noexcept { return Node::CountLiving() + LiveCount::Living(); }

void LeaveOutPointersOfFailures(bool leave) noexcept { g_leavesOutPointers = leave; }

}  // namespace devkit::msxml
