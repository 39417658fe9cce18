#include "devkit/msxml/document.h"

#include "devkit/msxml/domdocument.h"
#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/errorcodes.h"

namespace devkit::msxml::tests {
namespace {

bool Has(const DocumentPtr& pDocument, REFIID iid) {
    ComPtr<IUnknown> pObject;
    const HRESULT result = pDocument->QueryInterface(iid, pObject.PutVoid());
    EXPECT_EQ(result, pObject ? S_OK : E_NOINTERFACE);
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
    EXPECT_TRUE(Has(pDocument, __uuidof(IPersistStream)));
    EXPECT_TRUE(Has(pDocument, __uuidof(IPersistStreamInit)));
}

TEST_P(DocumentMethods, HasIStream) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: the document has no IStream";
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
    EXPECT_EQ(pDocument->get_documentElement(pRoot.Put()), S_FALSE);
    EXPECT_FALSE(pRoot);
    VARIANT_BOOL has = VARIANT_TRUE;
    EXPECT_EQ(pDocument->hasChildNodes(&has), S_FALSE);
    EXPECT_EQ(has, VARIANT_FALSE);
    ComPtr<IXMLDOMDocumentType> pType;
    EXPECT_EQ(pDocument->get_doctype(pType.Put()), S_FALSE);
    EXPECT_FALSE(pType);
    EXPECT_EQ(ErrorCode(pDocument), S_OK);
}

TEST_P(DocumentMethods, BuildsADocumentNodeByNode) {
    const DocumentPtr pDocument = New();
    ElementPtr pRoot;
    ASSERT_EQ(pDocument->createElement(Bstr(L"a").Get(), pRoot.Put()), S_OK);
    ASSERT_EQ(pDocument->putref_documentElement(pRoot.Get()), S_OK);
    ComPtr<IXMLDOMText> pText;
    ASSERT_EQ(pDocument->createTextNode(Bstr(L"text").Get(), pText.Put()), S_OK);
    ASSERT_EQ(pRoot->appendChild(pText.Get(), nullptr), S_OK);
    ComPtr<IXMLDOMComment> pComment;
    ASSERT_EQ(pDocument->createComment(Bstr(L"c").Get(), pComment.Put()), S_OK);
    ASSERT_EQ(pRoot->appendChild(pComment.Get(), nullptr), S_OK);
    ComPtr<IXMLDOMCDATASection> pSection;
    ASSERT_EQ(pDocument->createCDATASection(Bstr(L"<>").Get(), pSection.Put()), S_OK);
    ASSERT_EQ(pRoot->appendChild(pSection.Get(), nullptr), S_OK);
    ComPtr<IXMLDOMProcessingInstruction> pInstruction;
    ASSERT_EQ(pDocument->createProcessingInstruction(Bstr(L"p").Get(), Bstr(L"d").Get(), pInstruction.Put()),
              S_OK);
    ASSERT_EQ(pRoot->appendChild(pInstruction.Get(), nullptr), S_OK);
    ComPtr<IXMLDOMAttribute> pAttribute;
    ASSERT_EQ(pDocument->createAttribute(Bstr(L"b").Get(), pAttribute.Put()), S_OK);
    ASSERT_EQ(pRoot->setAttributeNode(pAttribute.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<a b=\"\">text<!--c--><![CDATA[<>]]><?p d?></a>");
}

TEST_P(DocumentMethods, CreateNodeTakesNumbersAndNames) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: names of kinds are not known";
    const DocumentPtr pDocument = New();
    const std::pair<const wchar_t*, DOMNodeType> kinds[] = {
        {L"element", NODE_ELEMENT}, {L"attribute", NODE_ATTRIBUTE},
        {L"text", NODE_TEXT},       {L"cdatasection", NODE_CDATA_SECTION},
        {L"comment", NODE_COMMENT}, {L"processinginstruction", NODE_PROCESSING_INSTRUCTION}};
    for (const auto& [name, type] : kinds) {
        NodePtr pNode;
        ASSERT_EQ(pDocument->createNode(Variant(std::wstring_view(name)).Get(), Bstr(L"n").Get(), nullptr,
                                        pNode.Put()),
                  S_OK)
            << name;
        DOMNodeType found = NODE_INVALID;
        ASSERT_EQ(pNode->get_nodeType(&found), S_OK);
        EXPECT_EQ(found, type);
        ASSERT_EQ(pDocument->createNode(Variant(LONG{type}).Get(), Bstr(L"n").Get(), nullptr, pNode.Put()),
                  S_OK);
        ASSERT_EQ(pNode->get_nodeType(&found), S_OK);
        EXPECT_EQ(found, type);
    }
}

TEST_P(DocumentMethods, CreateNodeBindsThePrefix) {
    const NodePtr pNode = MakeNode(New(), NODE_ELEMENT, L"p:a", L"urn:p");
    EXPECT_EQ(NameOf(pNode.Get()), L"p:a");
    EXPECT_EQ(PrefixOf(pNode.Get()), L"p");
    EXPECT_EQ(BaseNameOf(pNode.Get()), L"a");
    EXPECT_EQ(UriOf(pNode.Get()), L"urn:p");
    const NodePtr pDefault = MakeNode(New(), NODE_ELEMENT, L"a", L"urn:d");
    EXPECT_EQ(PrefixOf(pDefault.Get()), L"<none>");
    EXPECT_EQ(UriOf(pDefault.Get()), L"urn:d");
}

TEST_P(DocumentMethods, DeclarationsAlwaysHaveTheirNamespace) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: keeps the namespace that is given";
    for (const wchar_t* uri : {L"", L"urn:other", L"http://www.w3.org/2000/xmlns/"}) {
        EXPECT_EQ(UriOf(MakeNode(New(), NODE_ATTRIBUTE, L"xmlns", uri).Get()),
                  L"http://www.w3.org/2000/xmlns/");
        EXPECT_EQ(UriOf(MakeNode(New(), NODE_ATTRIBUTE, L"xmlns:p", uri).Get()),
                  L"http://www.w3.org/2000/xmlns/");
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
    EXPECT_EQ(pDocument->createNode(Variant(std::wstring_view(L"nothing")).Get(), Bstr(L"n").Get(), nullptr,
                                    pNode.Put()),
              E_INVALIDARG);
}

TEST_P(DocumentMethods, CreateNodeRefusesAnEmptyName) {
    const DocumentPtr pDocument = New();
    for (const DOMNodeType type : {NODE_ELEMENT, NODE_ATTRIBUTE, NODE_PROCESSING_INSTRUCTION}) {
        NodePtr pNode;
        EXPECT_EQ(pDocument->createNode(Variant(LONG{type}).Get(), Bstr(L"").Get(), nullptr, pNode.Put()),
                  E_FAIL);
        EXPECT_EQ(pDocument->createNode(Variant(LONG{type}).Get(), nullptr, nullptr, pNode.Put()), E_FAIL);
    }
}

TEST_P(DocumentMethods, NewNodesHaveADocumentAndNoParent) {
    const DocumentPtr pDocument = New();
    const NodePtr pNode = MakeNode(pDocument, NODE_ELEMENT, L"a");
    NodePtr pParent;
    EXPECT_EQ(pNode->get_parentNode(pParent.Put()), S_FALSE);
    ComPtr<IXMLDOMDocument> pOwner;
    EXPECT_EQ(pNode->get_ownerDocument(pOwner.Put()), S_OK);
}

TEST_P(DocumentMethods, CloneNodeDeepAndShallow) {
    const DocumentPtr pDocument = From(L"<a><b c=\"1\"><d>text</d><!--e--></b></a>");
    const NodePtr pOriginal = ChildAt(RootOf(pDocument).Get(), 0);
    NodePtr pDeep;
    ASSERT_EQ(pOriginal->cloneNode(VARIANT_TRUE, pDeep.Put()), S_OK);
    EXPECT_EQ(XmlOf(pDeep.Get()), L"<b c=\"1\"><d>text</d><!--e--></b>");
    NodePtr pShallow;
    ASSERT_EQ(pOriginal->cloneNode(VARIANT_FALSE, pShallow.Put()), S_OK);
    EXPECT_EQ(XmlOf(pShallow.Get()), L"<b c=\"1\"/>");
    NodePtr pParent;
    EXPECT_EQ(pDeep->get_parentNode(pParent.Put()), S_FALSE);
    ASSERT_EQ(pDeep->put_text(Bstr(L"changed").Get()), S_OK);
    EXPECT_EQ(XmlOf(pOriginal.Get()), L"<b c=\"1\"><d>text</d><!--e--></b>");
}

TEST_P(DocumentMethods, ACloneKeepsTheNamespaces) {
    const DocumentPtr pDocument = From(L"<p:a xmlns:p=\"urn:p\"><p:b p:c=\"1\"><p:d/></p:b></p:a>");
    NodePtr pClone;
    ASSERT_EQ(ChildAt(RootOf(pDocument).Get(), 0)->cloneNode(VARIANT_TRUE, pClone.Put()), S_OK);
    EXPECT_EQ(UriOf(pClone.Get()), L"urn:p");
    EXPECT_EQ(UriOf(ChildAt(pClone.Get(), 0).Get()), L"urn:p");
    EXPECT_EQ(UriOf(AttributeOf(pClone.Get(), L"p:c").Get()), L"urn:p");
}

TEST_P(DocumentMethods, ACloneGoesIntoAnotherDocument) {
    const DocumentPtr pSource = From(L"<p:a xmlns:p=\"urn:p\"><p:b/></p:a>");
    const DocumentPtr pTarget = From(L"<z/>");
    NodePtr pClone;
    ASSERT_EQ(ChildAt(RootOf(pSource).Get(), 0)->cloneNode(VARIANT_TRUE, pClone.Put()), S_OK);
    ASSERT_EQ(RootOf(pTarget)->appendChild(pClone.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pTarget).Get()), L"<z><p:b xmlns:p=\"urn:p\"/></z>");
}

using KitDocument = KitDom;

TEST_F(KitDocument, IsCreatedDirectly) {
    void* pObject = &pObject;
    EXPECT_EQ(CreateDomDocument(__uuidof(IXMLDOMElement), &pObject), E_NOINTERFACE);
    EXPECT_EQ(pObject, nullptr);
    EXPECT_EQ(CreateDomDocument(__uuidof(IUnknown), nullptr), E_POINTER);
    ComPtr<IStream> pStream;
    EXPECT_EQ(CreateDomDocument(__uuidof(IStream), pStream.PutVoid()), S_OK);
    EXPECT_EQ(New()->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
}

TEST_F(KitDocument, ANodeIsOneObject) {
    const DocumentPtr pDocument = From(L"<a b=\"1\"/>");
    EXPECT_EQ(RootOf(pDocument).Get(), RootOf(pDocument).Get());
    EXPECT_EQ(AttributeOf(RootOf(pDocument).Get(), L"b").Get(), Find(pDocument.Get(), L"/a/@b").Get());
    ComPtr<IXMLDOMDocument> pOwner;
    ASSERT_EQ(RootOf(pDocument)->get_ownerDocument(pOwner.Put()), S_OK);
    EXPECT_EQ(pOwner.Get(), static_cast<IXMLDOMDocument*>(pDocument.Get()));
    ComPtr<IUnknown> pOne;
    ComPtr<IUnknown> pOther;
    ASSERT_EQ(RootOf(pDocument).QueryTo(pOne), S_OK);
    ASSERT_EQ(ChildAt(pDocument.Get(), 0).QueryTo(pOther), S_OK);
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
        EXPECT_EQ(pDocument->createElement(Bstr(name).Get(), pElement.Put()), code) << name;
        EXPECT_FALSE(pElement);
        ComPtr<IXMLDOMAttribute> pAttribute;
        EXPECT_EQ(pDocument->createAttribute(Bstr(name).Get(), pAttribute.Put()), code) << name;
    }
    ElementPtr pElement;
    EXPECT_EQ(pDocument->createElement(Bstr(L"\x00e4-1.\xd840\xdc00").Get(), pElement.Put()), S_OK);
}

TEST_F(KitDocument, RefusesNullArguments) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(pDocument->get_documentElement(nullptr), E_INVALIDARG);
    EXPECT_EQ(pDocument->putref_documentElement(nullptr), E_INVALIDARG);
    EXPECT_EQ(pDocument->createElement(Bstr(L"a").Get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(pDocument->createTextNode(nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(pDocument->createNode(Variant(LONG{1}).Get(), Bstr(L"a").Get(), nullptr, nullptr),
              E_INVALIDARG);
    EXPECT_EQ(pDocument->cloneNode(VARIANT_TRUE, nullptr), E_INVALIDARG);
    EXPECT_EQ(pDocument->get_doctype(nullptr), E_INVALIDARG);
    EXPECT_EQ(pDocument->get_implementation(nullptr), E_INVALIDARG);
}

TEST_F(KitDocument, ACloneOfTheDocumentIsOneOfItsOwn) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\" encoding=\"utf-16\"?><a b=\"1\"><c/></a>");
    BindPrefixes(pDocument, L"xmlns:p='urn:p'");
    NodePtr pClone;
    ASSERT_EQ(pDocument->cloneNode(VARIANT_TRUE, pClone.Put()), S_OK);
    DocumentPtr pCopy;
    ASSERT_EQ(pClone.QueryTo(pCopy), S_OK);
    EXPECT_NE(pCopy.Get(), pDocument.Get());
    EXPECT_EQ(Saved(pCopy), Saved(pDocument));
    Variant namespaces;
    ASSERT_EQ(pCopy->getProperty(Bstr(L"SelectionNamespaces").Get(), namespaces.Put()), S_OK);
    EXPECT_STREQ(namespaces.Text(), L"xmlns:p='urn:p'");
    ASSERT_EQ(pDocument->cloneNode(VARIANT_FALSE, pClone.Put()), S_OK);
    EXPECT_EQ(XmlOf(pClone.Get()), L"");
}

TEST_F(KitDocument, EveryKindOfNodeCanBeCloned) {
    const DocumentPtr pDocument = From(L"<a b=\"1\">t<![CDATA[d]]><!--c--><?p d?></a>");
    NodePtr pClone;
    for (long i = 0; i < 4; ++i) {
        const NodePtr pChild = ChildAt(RootOf(pDocument).Get(), i);
        ASSERT_EQ(pChild->cloneNode(VARIANT_TRUE, pClone.Put()), S_OK);
        EXPECT_EQ(XmlOf(pClone.Get()), XmlOf(pChild.Get()));
    }
    ASSERT_EQ(AttributeOf(RootOf(pDocument).Get(), L"b")->cloneNode(VARIANT_FALSE, pClone.Put()), S_OK);
    EXPECT_EQ(ValueOf(pClone.Get()), L"1");
    ASSERT_EQ(MakeNode(pDocument, NODE_ENTITY_REFERENCE, L"e")->cloneNode(VARIANT_TRUE, pClone.Put()), S_OK);
    EXPECT_EQ(NameOf(pClone.Get()), L"e");
    const NodePtr pFragment = MakeNode(pDocument, NODE_DOCUMENT_FRAGMENT, L"");
    ASSERT_EQ(pFragment->appendChild(RootOf(pDocument).Get(), nullptr), S_OK);
    ASSERT_EQ(pFragment->cloneNode(VARIANT_TRUE, pClone.Put()), S_OK);
    EXPECT_EQ(XmlOf(pClone.Get()), L"<a b=\"1\">t<![CDATA[d]]><!--c--><?p d?></a>");
}

TEST_F(KitDocument, NodeFromIdFindsNone) {
    NodePtr pNode;
    EXPECT_EQ(From(L"<a xml:id=\"i\"/>")->nodeFromID(Bstr(L"i").Get(), pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
}

TEST_F(KitDocument, TellsItsFeatures) {
    const DocumentPtr pDocument = New();
    ComPtr<IXMLDOMImplementation> pImplementation;
    ASSERT_EQ(pDocument->get_implementation(pImplementation.Put()), S_OK);
    const auto has = [&](std::wstring_view feature, std::wstring_view version) {
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(pImplementation->hasFeature(Bstr(feature).Get(), Bstr(version).Get(), &result), S_OK);
        return result == VARIANT_TRUE;
    };
    EXPECT_TRUE(has(L"XML", L"1.0"));
    EXPECT_TRUE(has(L"dom", L""));
    EXPECT_TRUE(has(L"MS-DOM", L"2.0"));
    EXPECT_FALSE(has(L"XML", L"2.0"));
    EXPECT_FALSE(has(L"SVG", L"1.0"));
    EXPECT_EQ(pImplementation->hasFeature(nullptr, nullptr, nullptr), E_INVALIDARG);
}

TEST_F(KitDocument, WhatIsNotOfferedSaysSo) {
    const DocumentPtr pDocument = New();
    const Variant nothing;
    EXPECT_EQ(pDocument->put_onreadystatechange(nothing.Get()), E_NOTIMPL);
    EXPECT_EQ(pDocument->put_ondataavailable(nothing.Get()), E_NOTIMPL);
    EXPECT_EQ(pDocument->put_ontransformnode(nothing.Get()), E_NOTIMPL);
    EXPECT_EQ(pDocument->putref_schemas(nothing.Get()), E_NOTIMPL);
    ComPtr<IXMLDOMSchemaCollection> pSchemas;
    EXPECT_EQ(pDocument->get_namespaces(pSchemas.Put()), E_NOTIMPL);
    Variant schemas;
    EXPECT_EQ(pDocument->get_schemas(schemas.Put()), E_NOTIMPL);
    ComPtr<IXMLDOMParseError> pError;
    EXPECT_EQ(pDocument->validate(pError.Put()), E_NOTIMPL);
}

}  // namespace
}  // namespace devkit::msxml::tests
