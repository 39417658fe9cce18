#include "devkit/msxml/com/document.h"

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/domdocument.h"
#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml::tests {
namespace {

bool Has(const DocumentPtr& pDocument, REFIID iid) {
    ComPtr<IUnknown> pObject;
    const HRESULT result = pDocument->QueryInterface(iid, pObject.PutVoid());
    EXPECT_EQ(pObject ? S_OK : E_NOINTERFACE, result);
    return result == S_OK;
}

class DocumentMethods : public Conformance {};
RUN_FOR_BOTH_MAKERS(DocumentMethods);

TEST_P(DocumentMethods, HasTheInterfacesOfADocument) {
    const DocumentPtr pDocument = New();
    EXPECT_TRUE(Has(pDocument, __uuidof(IUnknown)));
    EXPECT_TRUE(Has(pDocument, __uuidof(IDispatch)));
    EXPECT_TRUE(Has(pDocument, __uuidof(IXMLDOMNode)));
    EXPECT_TRUE(Has(pDocument, __uuidof(IXMLDOMDocument)));
    EXPECT_TRUE(Has(pDocument, __uuidof(IXMLDOMDocument2)));
}

TEST_P(DocumentMethods, HasIStream) {
    if (HasGaps()) GTEST_SKIP() << "known gap: the document has no IStream";
    EXPECT_TRUE(Has(New(), __uuidof(IStream)));
}

TEST_P(DocumentMethods, HasNeitherISequentialStreamNorIPersist) {
    const DocumentPtr pDocument = New();
    EXPECT_FALSE(Has(pDocument, __uuidof(ISequentialStream)));
    EXPECT_FALSE(Has(pDocument, __uuidof(IPersist)));
    EXPECT_FALSE(Has(pDocument, __uuidof(IXMLDOMElement)));
}

TEST_P(DocumentMethods, IsEmptyAtFirst) {
    const DocumentPtr pDocument = New();
    ElementPtr pRoot;
    EXPECT_EQ(S_FALSE, pDocument->get_documentElement(pRoot.Put()));
    EXPECT_FALSE(pRoot);
    VARIANT_BOOL has = VARIANT_TRUE;
    EXPECT_EQ(S_FALSE, pDocument->hasChildNodes(&has));
    EXPECT_EQ(VARIANT_FALSE, has);
    ComPtr<IXMLDOMDocumentType> pType;
    EXPECT_EQ(S_FALSE, pDocument->get_doctype(pType.Put()));
    EXPECT_FALSE(pType);
    EXPECT_EQ(S_OK, ErrorCode(pDocument));
}

TEST_P(DocumentMethods, BuildsADocumentNodeByNode) {
    const DocumentPtr pDocument = New();
    ElementPtr pRoot;
    ASSERT_EQ(S_OK, pDocument->createElement(Bstr(L"a").Get(), pRoot.Put()));
    ASSERT_EQ(S_OK, pDocument->putref_documentElement(pRoot.Get()));
    ComPtr<IXMLDOMText> pText;
    ASSERT_EQ(S_OK, pDocument->createTextNode(Bstr(L"text").Get(), pText.Put()));
    ASSERT_EQ(S_OK, pRoot->appendChild(pText.Get(), nullptr));
    ComPtr<IXMLDOMComment> pComment;
    ASSERT_EQ(S_OK, pDocument->createComment(Bstr(L"c").Get(), pComment.Put()));
    ASSERT_EQ(S_OK, pRoot->appendChild(pComment.Get(), nullptr));
    ComPtr<IXMLDOMCDATASection> pSection;
    ASSERT_EQ(S_OK, pDocument->createCDATASection(Bstr(L"<>").Get(), pSection.Put()));
    ASSERT_EQ(S_OK, pRoot->appendChild(pSection.Get(), nullptr));
    ComPtr<IXMLDOMProcessingInstruction> pInstruction;
    ASSERT_EQ(S_OK,
              pDocument->createProcessingInstruction(Bstr(L"p").Get(), Bstr(L"d").Get(), pInstruction.Put()));
    ASSERT_EQ(S_OK, pRoot->appendChild(pInstruction.Get(), nullptr));
    ComPtr<IXMLDOMAttribute> pAttribute;
    ASSERT_EQ(S_OK, pDocument->createAttribute(Bstr(L"b").Get(), pAttribute.Put()));
    ASSERT_EQ(S_OK, pRoot->setAttributeNode(pAttribute.Get(), nullptr));
    EXPECT_EQ(L"<a b=\"\">text<!--c--><![CDATA[<>]]><?p d?></a>", XmlOf(pRoot.Get()));
}

TEST_P(DocumentMethods, CreateNodeTakesNumbersAndNames) {
    if (HasGaps()) GTEST_SKIP() << "known gap: names of kinds are not known";
    const DocumentPtr pDocument = New();
    const std::pair<const wchar_t*, DOMNodeType> kinds[] = {
        {L"element", NODE_ELEMENT}, {L"attribute", NODE_ATTRIBUTE},
        {L"text", NODE_TEXT},       {L"cdatasection", NODE_CDATA_SECTION},
        {L"comment", NODE_COMMENT}, {L"processinginstruction", NODE_PROCESSING_INSTRUCTION}};
    for (const auto& [name, type] : kinds) {
        NodePtr pNode;
        ASSERT_EQ(S_OK, pDocument->createNode(Variant(std::wstring_view(name)).Get(), Bstr(L"n").Get(),
                                              nullptr, pNode.Put()))
            << name;
        DOMNodeType found = NODE_INVALID;
        ASSERT_EQ(S_OK, pNode->get_nodeType(&found));
        EXPECT_EQ(type, found);
        ASSERT_EQ(S_OK, pDocument->createNode(Variant(static_cast<LONG>(type)).Get(), Bstr(L"n").Get(),
                                              nullptr, pNode.Put()));
        ASSERT_EQ(S_OK, pNode->get_nodeType(&found));
        EXPECT_EQ(type, found);
    }
}

TEST_P(DocumentMethods, CreateNodeBindsThePrefix) {
    const NodePtr pNode = MakeNode(New(), NODE_ELEMENT, L"p:a", L"urn:p");
    EXPECT_EQ(L"p:a", NameOf(pNode.Get()));
    EXPECT_EQ(L"p", PrefixOf(pNode.Get()));
    EXPECT_EQ(L"a", BaseNameOf(pNode.Get()));
    EXPECT_EQ(L"urn:p", UriOf(pNode.Get()));
    const NodePtr pDefault = MakeNode(New(), NODE_ELEMENT, L"a", L"urn:d");
    EXPECT_EQ(L"<none>", PrefixOf(pDefault.Get()));
    EXPECT_EQ(L"urn:d", UriOf(pDefault.Get()));
}

TEST_P(DocumentMethods, DeclarationsAlwaysHaveTheirNamespace) {
    if (HasGaps()) GTEST_SKIP() << "known gap: keeps the namespace that is given";
    for (const wchar_t* uri : {L"", L"urn:other", L"http://www.w3.org/2000/xmlns/"}) {
        EXPECT_EQ(L"http://www.w3.org/2000/xmlns/",
                  UriOf(MakeNode(New(), NODE_ATTRIBUTE, L"xmlns", uri).Get()));
        EXPECT_EQ(L"http://www.w3.org/2000/xmlns/",
                  UriOf(MakeNode(New(), NODE_ATTRIBUTE, L"xmlns:p", uri).Get()));
    }
}

TEST_P(DocumentMethods, CreateNodeRefusesKindsThatItDoesNotMake) {
    const DocumentPtr pDocument = New();
    for (const LONG type : {0L, 6L, 9L, 10L, 12L, 13L, -1L}) {
        NodePtr pNode;
        EXPECT_TRUE(
            FAILED(pDocument->createNode(Variant(type).Get(), Bstr(L"n").Get(), nullptr, pNode.Put())))
            << type;
        EXPECT_FALSE(pNode);
    }
    NodePtr pNode;
    EXPECT_EQ(E_INVALIDARG, pDocument->createNode(Variant(std::wstring_view(L"nothing")).Get(),
                                                  Bstr(L"n").Get(), nullptr, pNode.Put()));
}

TEST_P(DocumentMethods, CreateNodeRefusesAnEmptyName) {
    const DocumentPtr pDocument = New();
    for (const DOMNodeType type : {NODE_ELEMENT, NODE_ATTRIBUTE, NODE_PROCESSING_INSTRUCTION}) {
        NodePtr pNode;
        EXPECT_EQ(E_FAIL, pDocument->createNode(Variant(static_cast<LONG>(type)).Get(), Bstr(L"").Get(),
                                                nullptr, pNode.Put()));
        EXPECT_EQ(E_FAIL, pDocument->createNode(Variant(static_cast<LONG>(type)).Get(), nullptr, nullptr,
                                                pNode.Put()));
    }
}

TEST_P(DocumentMethods, NewNodesHaveADocumentAndNoParent) {
    const DocumentPtr pDocument = New();
    const NodePtr pNode = MakeNode(pDocument, NODE_ELEMENT, L"a");
    NodePtr pParent;
    EXPECT_EQ(S_FALSE, pNode->get_parentNode(pParent.Put()));
    ComPtr<IXMLDOMDocument> pOwner;
    EXPECT_EQ(S_OK, pNode->get_ownerDocument(pOwner.Put()));
}

TEST_P(DocumentMethods, CloneNodeDeepAndShallow) {
    const DocumentPtr pDocument = From(L"<a><b c=\"1\"><d>text</d><!--e--></b></a>");
    const NodePtr pOriginal = ChildAt(RootOf(pDocument).Get(), 0);
    NodePtr pDeep;
    ASSERT_EQ(S_OK, pOriginal->cloneNode(VARIANT_TRUE, pDeep.Put()));
    EXPECT_EQ(L"<b c=\"1\"><d>text</d><!--e--></b>", XmlOf(pDeep.Get()));
    NodePtr pShallow;
    ASSERT_EQ(S_OK, pOriginal->cloneNode(VARIANT_FALSE, pShallow.Put()));
    EXPECT_EQ(L"<b c=\"1\"/>", XmlOf(pShallow.Get()));
    NodePtr pParent;
    EXPECT_EQ(S_FALSE, pDeep->get_parentNode(pParent.Put()));
    ASSERT_EQ(S_OK, pDeep->put_text(Bstr(L"changed").Get()));
    EXPECT_EQ(L"<b c=\"1\"><d>text</d><!--e--></b>", XmlOf(pOriginal.Get()));
}

TEST_P(DocumentMethods, ACloneKeepsTheNamespaces) {
    const DocumentPtr pDocument = From(L"<p:a xmlns:p=\"urn:p\"><p:b p:c=\"1\"><p:d/></p:b></p:a>");
    NodePtr pClone;
    ASSERT_EQ(S_OK, ChildAt(RootOf(pDocument).Get(), 0)->cloneNode(VARIANT_TRUE, pClone.Put()));
    EXPECT_EQ(L"urn:p", UriOf(pClone.Get()));
    EXPECT_EQ(L"urn:p", UriOf(ChildAt(pClone.Get(), 0).Get()));
    EXPECT_EQ(L"urn:p", UriOf(AttributeOf(pClone.Get(), L"p:c").Get()));
}

TEST_P(DocumentMethods, ACloneGoesIntoAnotherDocument) {
    const DocumentPtr pSource = From(L"<p:a xmlns:p=\"urn:p\"><p:b/></p:a>");
    const DocumentPtr pTarget = From(L"<z/>");
    NodePtr pClone;
    ASSERT_EQ(S_OK, ChildAt(RootOf(pSource).Get(), 0)->cloneNode(VARIANT_TRUE, pClone.Put()));
    ASSERT_EQ(S_OK, RootOf(pTarget)->appendChild(pClone.Get(), nullptr));
    EXPECT_EQ(L"<z><p:b xmlns:p=\"urn:p\"/></z>", XmlOf(RootOf(pTarget).Get()));
}

using KitDocument = KitDom;

TEST_F(KitDocument, IsCreatedDirectly) {
    void* pObject = &pObject;
    EXPECT_EQ(E_NOINTERFACE, CreateDomDocument(__uuidof(IXMLDOMElement), &pObject));
    EXPECT_EQ(nullptr, pObject);
    EXPECT_EQ(E_POINTER, CreateDomDocument(__uuidof(IUnknown), nullptr));
    ComPtr<IStream> pStream;
    EXPECT_EQ(S_OK, CreateDomDocument(__uuidof(IStream), pStream.PutVoid()));
    EXPECT_EQ(E_POINTER, New()->QueryInterface(__uuidof(IUnknown), nullptr));
}

TEST_F(KitDocument, ANodeIsOneObject) {
    const DocumentPtr pDocument = From(L"<a b=\"1\"/>");
    EXPECT_EQ(RootOf(pDocument).Get(), RootOf(pDocument).Get());
    EXPECT_EQ(AttributeOf(RootOf(pDocument).Get(), L"b").Get(), Find(pDocument.Get(), L"/a/@b").Get());
    ComPtr<IXMLDOMDocument> pOwner;
    ASSERT_EQ(S_OK, RootOf(pDocument)->get_ownerDocument(pOwner.Put()));
    EXPECT_EQ(pOwner.Get(), static_cast<IXMLDOMDocument*>(pDocument.Get()));
    ComPtr<IUnknown> pOne;
    ComPtr<IUnknown> pOther;
    ASSERT_EQ(S_OK, RootOf(pDocument).QueryTo(pOne));
    ASSERT_EQ(S_OK, ChildAt(pDocument.Get(), 0).QueryTo(pOther));
    EXPECT_EQ(pOne.Get(), pOther.Get());
}

TEST_F(KitDocument, BadNamesAreRefused) {
    const DocumentPtr pDocument = New();
    const std::pair<const wchar_t*, HRESULT> names[] = {
        {L"1", Hresult(XmlBadStartNameChar)},   {L"a b", Hresult(XmlBadNameChar)},
        {L"a\xd800", Hresult(XmlBadNameChar)},  {L"p:q:r", Hresult(XmlMultipleColons)},
        {L":a", Hresult(XmlBadStartNameChar)},  {L"a:", Hresult(XmlBadStartNameChar)},
        {L"p:a", Hresult(XmlPrefixUndeclared)}, {L"", E_FAIL}};
    for (const auto& [name, code] : names) {
        ElementPtr pElement;
        EXPECT_EQ(code, pDocument->createElement(Bstr(name).Get(), pElement.Put())) << name;
        EXPECT_FALSE(pElement);
        ComPtr<IXMLDOMAttribute> pAttribute;
        EXPECT_EQ(code, pDocument->createAttribute(Bstr(name).Get(), pAttribute.Put())) << name;
    }
    ElementPtr pElement;
    EXPECT_EQ(S_OK, pDocument->createElement(Bstr(L"\x00e4-1.\xd840\xdc00").Get(), pElement.Put()));
}

TEST_F(KitDocument, RefusesNullArguments) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(E_INVALIDARG, pDocument->get_documentElement(nullptr));
    EXPECT_EQ(E_INVALIDARG, pDocument->putref_documentElement(nullptr));
    EXPECT_EQ(E_INVALIDARG, pDocument->createElement(Bstr(L"a").Get(), nullptr));
    EXPECT_EQ(E_INVALIDARG, pDocument->createTextNode(nullptr, nullptr));
    EXPECT_EQ(E_INVALIDARG,
              pDocument->createNode(Variant(LONG{1}).Get(), Bstr(L"a").Get(), nullptr, nullptr));
    EXPECT_EQ(E_INVALIDARG, pDocument->cloneNode(VARIANT_TRUE, nullptr));
    EXPECT_EQ(E_INVALIDARG, pDocument->get_doctype(nullptr));
    EXPECT_EQ(E_INVALIDARG, pDocument->get_implementation(nullptr));
}

TEST_F(KitDocument, ACloneOfTheDocumentIsOneOfItsOwn) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\" encoding=\"utf-16\"?><a b=\"1\"><c/></a>");
    BindPrefixes(pDocument, L"xmlns:p='urn:p'");
    NodePtr pClone;
    ASSERT_EQ(S_OK, pDocument->cloneNode(VARIANT_TRUE, pClone.Put()));
    DocumentPtr pCopy;
    ASSERT_EQ(S_OK, pClone.QueryTo(pCopy));
    EXPECT_NE(pCopy.Get(), pDocument.Get());
    EXPECT_EQ(Saved(pCopy), Saved(pDocument));
    Variant namespaces;
    ASSERT_EQ(S_OK, pCopy->getProperty(Bstr(L"SelectionNamespaces").Get(), namespaces.Put()));
    EXPECT_STREQ(L"xmlns:p='urn:p'", namespaces.Text());
    ASSERT_EQ(S_OK, pDocument->cloneNode(VARIANT_FALSE, pClone.Put()));
    EXPECT_EQ(L"", XmlOf(pClone.Get()));
}

TEST_F(KitDocument, EveryKindOfNodeCanBeCloned) {
    const DocumentPtr pDocument = From(L"<a b=\"1\">t<![CDATA[d]]><!--c--><?p d?></a>");
    NodePtr pClone;
    for (long i = 0; i < 4; ++i) {
        const NodePtr pChild = ChildAt(RootOf(pDocument).Get(), i);
        ASSERT_EQ(S_OK, pChild->cloneNode(VARIANT_TRUE, pClone.Put()));
        EXPECT_EQ(XmlOf(pClone.Get()), XmlOf(pChild.Get()));
    }
    ASSERT_EQ(S_OK, AttributeOf(RootOf(pDocument).Get(), L"b")->cloneNode(VARIANT_FALSE, pClone.Put()));
    EXPECT_EQ(L"1", ValueOf(pClone.Get()));
    ASSERT_EQ(S_OK, MakeNode(pDocument, NODE_ENTITY_REFERENCE, L"e")->cloneNode(VARIANT_TRUE, pClone.Put()));
    EXPECT_EQ(L"e", NameOf(pClone.Get()));
    const NodePtr pFragment = MakeNode(pDocument, NODE_DOCUMENT_FRAGMENT, L"");
    ASSERT_EQ(S_OK, pFragment->appendChild(RootOf(pDocument).Get(), nullptr));
    ASSERT_EQ(S_OK, pFragment->cloneNode(VARIANT_TRUE, pClone.Put()));
    EXPECT_EQ(L"<a b=\"1\">t<![CDATA[d]]><!--c--><?p d?></a>", XmlOf(pClone.Get()));
}

TEST_F(KitDocument, NodeFromIdFindsNone) {
    NodePtr pNode;
    EXPECT_EQ(S_FALSE, From(L"<a xml:id=\"i\"/>")->nodeFromID(Bstr(L"i").Get(), pNode.Put()));
    EXPECT_FALSE(pNode);
}

TEST_F(KitDocument, TellsItsFeatures) {
    const DocumentPtr pDocument = New();
    ComPtr<IXMLDOMImplementation> pImplementation;
    ASSERT_EQ(S_OK, pDocument->get_implementation(pImplementation.Put()));
    const auto has = [&](std::wstring_view feature, std::wstring_view version) {
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(S_OK, pImplementation->hasFeature(Bstr(feature).Get(), Bstr(version).Get(), &result));
        return result == VARIANT_TRUE;
    };
    EXPECT_TRUE(has(L"XML", L"1.0"));
    EXPECT_TRUE(has(L"dom", L"1.0"));
    EXPECT_TRUE(has(L"MS-DOM", L"2.0"));
    EXPECT_FALSE(has(L"XML", L"2.0"));
    EXPECT_FALSE(has(L"SVG", L"1.0"));
    EXPECT_EQ(E_INVALIDARG, pImplementation->hasFeature(nullptr, nullptr, nullptr));
}

TEST_F(KitDocument, WhatIsNotOfferedSaysSo) {
    const DocumentPtr pDocument = New();
    EXPECT_FALSE(Has(pDocument, __uuidof(IPersistStream)));
    const Variant nothing;
    EXPECT_EQ(E_NOTIMPL, pDocument->put_onreadystatechange(nothing.Get()));
    EXPECT_EQ(E_NOTIMPL, pDocument->put_ondataavailable(nothing.Get()));
    EXPECT_EQ(E_NOTIMPL, pDocument->put_ontransformnode(nothing.Get()));
    EXPECT_EQ(E_NOTIMPL, pDocument->putref_schemas(nothing.Get()));
    ComPtr<IXMLDOMSchemaCollection> pSchemas;
    EXPECT_EQ(E_NOTIMPL, pDocument->get_namespaces(pSchemas.Put()));
    Variant schemas;
    EXPECT_EQ(E_NOTIMPL, pDocument->get_schemas(schemas.Put()));
    ComPtr<IXMLDOMParseError> pError;
    EXPECT_EQ(E_NOTIMPL, pDocument->validate(pError.Put()));
}

}  // namespace
}  // namespace devkit::msxml::tests
