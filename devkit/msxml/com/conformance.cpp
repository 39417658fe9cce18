#include "devkit/msxml/com/conformance.h"

#include <array>
#include <string_view>

#include "devkit/msxml/com/answer.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"
#include "platform/variant.h"

namespace devkit::msxml {

namespace {

using platform::Bstr;
using platform::ComPtr;
using platform::Variant;
using DocumentPtr = ComPtr<IXMLDOMDocument2>;

// Ends a check that found a gap.
void Require(bool holds) {
    if (!holds) throw common::HresultError(E_FAIL);
}

DocumentPtr NewDocument(IClassFactory& factory) {
    DocumentPtr pDocument;
    Require(factory.CreateInstance(nullptr, __uuidof(IXMLDOMDocument2), pDocument.PutVoid()) == S_OK);
    Require(pDocument->put_async(VARIANT_FALSE) == S_OK);
    return pDocument;
}

HRESULT LoadText(IXMLDOMDocument2& document, std::wstring_view text) {
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    return document.loadXML(Bstr(text).Get(), &isLoaded);
}

ComPtr<IXMLDOMElement> RootOf(IXMLDOMDocument2& document) {
    ComPtr<IXMLDOMElement> pRoot;
    Require(document.get_documentElement(pRoot.Put()) == S_OK);
    return pRoot;
}

void CheckName(const ComPtr<IXMLDOMNode>& pNode, std::wstring_view expected) {
    Bstr name;
    Require(pNode && pNode->get_nodeName(name.Put()) == S_OK && name.View() == expected);
}

// Namespace declarations are attributes like any other.
void CheckDeclarationsInMap(IClassFactory& factory) {
    const DocumentPtr pDocument = NewDocument(factory);
    Require(LoadText(*pDocument.Get(), L"<p:a xmlns:p=\"u\"/>") == S_OK);
    ComPtr<IXMLDOMNamedNodeMap> pMap;
    Require(RootOf(*pDocument.Get())->get_attributes(pMap.Put()) == S_OK);
    ComPtr<IXMLDOMNode> pNode;
    Require(pMap->nextNode(pNode.Put()) == S_OK);
    CheckName(pNode, L"xmlns:p");
    Require(pMap->getNamedItem(Bstr(L"xmlns:p").Get(), pNode.Put()) == S_OK);
    CheckName(pNode, L"xmlns:p");
}

// What the document's stream gives loads again.
void CheckReading(IClassFactory& factory) {
    const DocumentPtr pSource = NewDocument(factory);
    Require(LoadText(*pSource.Get(), L"<a/>") == S_OK);
    ComPtr<IStream> pStream;
    Require(pSource.QueryTo(pStream) == S_OK);
    const DocumentPtr pCopy = NewDocument(factory);
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    Require(pCopy->load(Variant(pStream.Get()).Get(), &isLoaded) == S_OK);
    ComPtr<IXMLDOMNode> pRoot;
    Require(RootOf(*pCopy.Get()).QueryTo(pRoot) == S_OK);
    CheckName(pRoot, L"a");
}

// What is written into the document's stream is its content once the stream is released.
void CheckWriting(IClassFactory& factory) {
    const DocumentPtr pDocument = NewDocument(factory);
    ComPtr<IStream> pStream;
    Require(pDocument.QueryTo(pStream) == S_OK);
    constexpr std::string_view kText = "<a/>";
    ULONG written = 0;
    Require(pStream->Write(kText.data(), static_cast<ULONG>(kText.size()), &written) == S_OK);
    pStream.Reset();
    static_cast<void>(RootOf(*pDocument.Get()));
}

void CheckSelection(IClassFactory& factory) {
    const DocumentPtr pDocument = NewDocument(factory);
    Require(LoadText(*pDocument.Get(), L"<a xmlns=\"u\" b=\"1\"/>") == S_OK);
    const Bstr property(L"SelectionNamespaces");
    Require(pDocument->setProperty(property.Get(), Variant(std::wstring_view(L"xmlns:p='u'")).Get()) == S_OK);
    ComPtr<IXMLDOMNode> pNode;
    Require(pDocument->selectSingleNode(Bstr(L"//p:a[@b = \"1\"]").Get(), pNode.Put()) == S_OK);
    CheckName(pNode, L"a");
    Require(FAILED(pDocument->selectSingleNode(Bstr(L"//q:a").Get(), pNode.Put())));
}

// A prefixed attribute brings its declaration along.
void CheckAttributeNamespace(IClassFactory& factory) {
    const DocumentPtr pDocument = NewDocument(factory);
    Require(LoadText(*pDocument.Get(), L"<a/>") == S_OK);
    ComPtr<IXMLDOMNode> pNode;
    Require(pDocument->createNode(Variant(LONG{NODE_ATTRIBUTE}).Get(), Bstr(L"p:b").Get(), Bstr(L"u").Get(),
                                  pNode.Put()) == S_OK);
    ComPtr<IXMLDOMAttribute> pAttribute;
    Require(pNode.QueryTo(pAttribute) == S_OK);
    Require(RootOf(*pDocument.Get())->setAttributeNode(pAttribute.Get(), nullptr) == S_OK);
    Bstr text;
    Require(pDocument->get_xml(text.Put()) == S_OK);
    Require(LoadText(*NewDocument(factory).Get(), text.View()) == S_OK);
}

void CheckDtdRefused(IClassFactory& factory) {
    Require(LoadText(*NewDocument(factory).Get(), L"<!DOCTYPE a><a/>") == S_FALSE);
}

}  // namespace

bool DomConforms(IClassFactory& factory) noexcept {
    constexpr std::array kChecks = {CheckDeclarationsInMap,  CheckReading,   CheckWriting, CheckSelection,
                                    CheckAttributeNamespace, CheckDtdRefused};
    return Guarded([&] {
               for (const auto check : kChecks) check(factory);
               return S_OK;
           }) == S_OK;
}

}  // namespace devkit::msxml
