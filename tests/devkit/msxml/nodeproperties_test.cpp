#include "devkit/msxml/nodeproperties.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

std::wstring TypeNameOf(IXMLDOMNode* pNode) {
    Bstr name;
    EXPECT_EQ(pNode->get_nodeTypeString(name.Put()), S_OK);
    return std::wstring(name.View());
}

DOMNodeType TypeOf(IXMLDOMNode* pNode) {
    DOMNodeType type = NODE_INVALID;
    EXPECT_EQ(pNode->get_nodeType(&type), S_OK);
    return type;
}

std::wstring TypedValueOf(IXMLDOMNode* pNode) {
    Variant value;
    EXPECT_EQ(pNode->get_nodeTypedValue(value.Put()), S_OK);
    EXPECT_EQ(value.Type(), VT_BSTR);
    return std::wstring(value.Text(), SysStringLen(value.Text()));
}

class Properties : public Conformance {};
RUN_FOR_BOTH_MAKERS(Properties);

TEST_P(Properties, NamesAndTypesOfAllKinds) {
    const DocumentPtr pDocument = From(L"<a b=\"1\">text<![CDATA[data]]><!--c--><?p d?></a>");
    const ElementPtr pRoot = RootOf(pDocument);
    struct Expected {
        NodePtr pNode;
        DOMNodeType type;
        std::wstring name;
        std::wstring typeName;
    };
    const Expected expected[] = {
        {NodePtr(pDocument.Get()), NODE_DOCUMENT, L"#document", L"document"},
        {NodePtr(pRoot.Get()), NODE_ELEMENT, L"a", L"element"},
        {AttributeOf(pRoot.Get(), L"b"), NODE_ATTRIBUTE, L"b", L"attribute"},
        {ChildAt(pRoot.Get(), 0), NODE_TEXT, L"#text", L"text"},
        {ChildAt(pRoot.Get(), 1), NODE_CDATA_SECTION, L"#cdata-section", L"cdatasection"},
        {ChildAt(pRoot.Get(), 2), NODE_COMMENT, L"#comment", L"comment"},
        {ChildAt(pRoot.Get(), 3), NODE_PROCESSING_INSTRUCTION, L"p", L"processinginstruction"},
        {MakeNode(pDocument, NODE_DOCUMENT_FRAGMENT, L""), NODE_DOCUMENT_FRAGMENT, L"#document-fragment",
         L"documentfragment"},
    };
    for (const Expected& each : expected) {
        EXPECT_EQ(TypeOf(each.pNode.Get()), each.type);
        EXPECT_EQ(NameOf(each.pNode.Get()), each.name);
        EXPECT_EQ(TypeNameOf(each.pNode.Get()), each.typeName);
    }
}

TEST_P(Properties, NamesInANamespace) {
    const DocumentPtr pDocument = From(L"<p:a xmlns:p=\"urn:p\"/>");
    const ElementPtr pRoot = RootOf(pDocument);
    EXPECT_EQ(NameOf(pRoot.Get()), L"p:a");
    EXPECT_EQ(PrefixOf(pRoot.Get()), L"p");
    EXPECT_EQ(BaseNameOf(pRoot.Get()), L"a");
    EXPECT_EQ(UriOf(pRoot.Get()), L"urn:p");
}

TEST_P(Properties, NamesWithoutANamespace) {
    const DocumentPtr pDocument = From(L"<a>text</a>");
    const ElementPtr pRoot = RootOf(pDocument);
    EXPECT_EQ(PrefixOf(pRoot.Get()), L"<none>");
    EXPECT_EQ(BaseNameOf(pRoot.Get()), L"a");
    EXPECT_EQ(UriOf(pRoot.Get()), L"<none>");
    const NodePtr pText = ChildAt(pRoot.Get(), 0);
    EXPECT_EQ(PrefixOf(pText.Get()), L"<none>");
    EXPECT_EQ(BaseNameOf(pText.Get()), L"<none>");
    EXPECT_EQ(UriOf(pText.Get()), L"<none>");
}

TEST_P(Properties, ADefaultNamespaceHasNoPrefix) {
    const DocumentPtr pDocument = From(L"<a xmlns=\"urn:d\" b=\"1\"/>");
    const ElementPtr pRoot = RootOf(pDocument);
    EXPECT_EQ(PrefixOf(pRoot.Get()), L"<none>");
    EXPECT_EQ(UriOf(pRoot.Get()), L"urn:d");
    EXPECT_EQ(UriOf(AttributeOf(pRoot.Get(), L"b").Get()), L"<none>");
}

TEST_P(Properties, ElementsAndDocumentsHaveNoValue) {
    const DocumentPtr pDocument = From(L"<a>text</a>");
    EXPECT_EQ(ValueOf(RootOf(pDocument).Get()), L"<none>");
    EXPECT_EQ(ValueOf(pDocument.Get()), L"<none>");
    const Variant value(std::wstring_view(L"x"));
    EXPECT_EQ(RootOf(pDocument)->put_nodeValue(value.Get()), E_FAIL);
    EXPECT_EQ(pDocument->put_nodeValue(value.Get()), E_FAIL);
}

TEST_P(Properties, ValuesOfTheOtherKinds) {
    const DocumentPtr pDocument = From(L"<a b=\"1\">text<![CDATA[data]]><!--c--><?p d?></a>");
    const ElementPtr pRoot = RootOf(pDocument);
    EXPECT_EQ(ValueOf(AttributeOf(pRoot.Get(), L"b").Get()), L"1");
    EXPECT_EQ(ValueOf(ChildAt(pRoot.Get(), 0).Get()), L"text");
    EXPECT_EQ(ValueOf(ChildAt(pRoot.Get(), 1).Get()), L"data");
    EXPECT_EQ(ValueOf(ChildAt(pRoot.Get(), 2).Get()), L"c");
    EXPECT_EQ(ValueOf(ChildAt(pRoot.Get(), 3).Get()), L"d");
}

TEST_P(Properties, ValuesCanBeChanged) {
    const DocumentPtr pDocument = From(L"<a b=\"1\">text<!--c--></a>");
    const ElementPtr pRoot = RootOf(pDocument);
    ASSERT_EQ(AttributeOf(pRoot.Get(), L"b")->put_nodeValue(Variant(LONG{42}).Get()), S_OK);
    ASSERT_EQ(ChildAt(pRoot.Get(), 0)->put_nodeValue(Variant(std::wstring_view(L"x<y")).Get()), S_OK);
    ASSERT_EQ(ChildAt(pRoot.Get(), 1)->put_nodeValue(Variant(std::wstring_view(L"z")).Get()), S_OK);
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<a b=\"42\">x&lt;y<!--z--></a>");
}

TEST_P(Properties, TextOfAnElementIsThatOfAllBelowIt) {
    const DocumentPtr pDocument = From(L"<a>one<b>two<!--not--><?p not?><![CDATA[<three>]]></b>four</a>");
    EXPECT_EQ(TextOf(RootOf(pDocument).Get()), L"onetwo<three>four");
}

TEST_P(Properties, TextOfAnElementIsWithoutWhiteSpaceAtBothEnds) {
    const DocumentPtr pDocument = From(L"<a>\n  one  two\t</a>");
    EXPECT_EQ(TextOf(RootOf(pDocument).Get()), L"one  two");
}

TEST_P(Properties, TextOfAnAttributeIsItsWholeValue) {
    const DocumentPtr pDocument = From(L"<a b=\" 1 \"/>");
    EXPECT_EQ(TextOf(AttributeOf(RootOf(pDocument).Get(), L"b").Get()), L" 1 ");
}

TEST_P(Properties, PutTextReplacesAllChildren) {
    const DocumentPtr pDocument = From(L"<a><b/>text<c/></a>");
    ASSERT_EQ(RootOf(pDocument)->put_text(Bstr(L"x & y").Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a>x &amp; y</a>");
    EXPECT_EQ(pDocument->put_text(Bstr(L"x").Get()), E_FAIL);
}

TEST_P(Properties, TypedValueWithoutADatatypeIsText) {
    const DocumentPtr pDocument = From(L"<a b=\"1\"><c>42</c></a>");
    EXPECT_EQ(TypedValueOf(RootOf(pDocument).Get()), L"42");
    EXPECT_EQ(TypedValueOf(AttributeOf(RootOf(pDocument).Get(), L"b").Get()), L"1");
    EXPECT_EQ(TypedValueOf(Find(pDocument.Get(), L"//c/text()").Get()), L"42");
}

TEST_P(Properties, TypedValueCanBePut) {
    const DocumentPtr pDocument = From(L"<a/>");
    ASSERT_EQ(RootOf(pDocument)->put_nodeTypedValue(Variant(LONG{7}).Get()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a>7</a>");
}

TEST_P(Properties, DataTypeIsAbsent) {
    const DocumentPtr pDocument = From(L"<a/>");
    Variant type;
    EXPECT_EQ(RootOf(pDocument)->get_dataType(type.Put()), S_FALSE);
    EXPECT_EQ(type.Type(), VT_NULL);
}

TEST_P(Properties, RefusesNullArguments) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: some methods fault for a null out-parameter";
    const DocumentPtr pDocument = From(L"<a/>");
    const ElementPtr pRoot = RootOf(pDocument);
    EXPECT_EQ(pRoot->get_nodeName(nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->get_nodeType(nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->get_nodeValue(nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->get_text(nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->get_xml(nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->get_prefix(nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->get_baseName(nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->get_namespaceURI(nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->get_nodeTypedValue(nullptr), E_INVALIDARG);
}

TEST_P(Properties, LinksBetweenNodes) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    const NodePtr pFirst = ChildAt(RootOf(pDocument).Get(), 0);
    NodePtr pOther;
    ASSERT_EQ(RootOf(pDocument)->get_firstChild(pOther.Put()), S_OK);
    EXPECT_EQ(NameOf(pOther.Get()), L"b");
    ASSERT_EQ(RootOf(pDocument)->get_lastChild(pOther.Put()), S_OK);
    EXPECT_EQ(NameOf(pOther.Get()), L"c");
    ASSERT_EQ(pFirst->get_nextSibling(pOther.Put()), S_OK);
    EXPECT_EQ(NameOf(pOther.Get()), L"c");
    EXPECT_EQ(pFirst->get_previousSibling(pOther.Put()), S_FALSE);
    EXPECT_FALSE(pOther);
    EXPECT_EQ(pFirst->get_firstChild(pOther.Put()), S_FALSE);
    EXPECT_EQ(pFirst->get_lastChild(pOther.Put()), S_FALSE);
    ASSERT_EQ(pFirst->get_parentNode(pOther.Put()), S_OK);
    EXPECT_EQ(NameOf(pOther.Get()), L"a");
    ASSERT_EQ(RootOf(pDocument)->get_parentNode(pOther.Put()), S_OK);
    EXPECT_EQ(NameOf(pOther.Get()), L"#document");
    EXPECT_EQ(pDocument->get_parentNode(pOther.Put()), S_FALSE);
    EXPECT_EQ(pFirst->get_parentNode(nullptr), E_INVALIDARG);
    EXPECT_EQ(pFirst->get_nextSibling(nullptr), E_INVALIDARG);
    EXPECT_EQ(pFirst->get_firstChild(nullptr), E_INVALIDARG);
}

TEST_P(Properties, OwnerDocumentIsTheDocumentItself) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: a document owns itself";
    const DocumentPtr pDocument = From(L"<a b=\"1\"/>");
    ComPtr<IXMLDOMDocument> pOwner;
    ASSERT_EQ(RootOf(pDocument)->get_ownerDocument(pOwner.Put()), S_OK);
    EXPECT_EQ(XmlOf(pOwner.Get()), XmlOf(pDocument.Get()));
    ASSERT_EQ(AttributeOf(RootOf(pDocument).Get(), L"b")->get_ownerDocument(pOwner.Put()), S_OK);
    EXPECT_EQ(pDocument->get_ownerDocument(pOwner.Put()), S_FALSE);
    EXPECT_FALSE(pOwner);
}

TEST_P(Properties, HasChildNodesTellsByStatusToo) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    VARIANT_BOOL has = VARIANT_FALSE;
    EXPECT_EQ(RootOf(pDocument)->hasChildNodes(&has), S_OK);
    EXPECT_EQ(has, VARIANT_TRUE);
    EXPECT_EQ(ChildAt(RootOf(pDocument).Get(), 0)->hasChildNodes(&has), S_FALSE);
    EXPECT_EQ(has, VARIANT_FALSE);
    EXPECT_EQ(RootOf(pDocument)->hasChildNodes(nullptr), E_INVALIDARG);
}

TEST_P(Properties, AttributeInterface) {
    const DocumentPtr pDocument = From(L"<a b=\"1\"/>");
    ComPtr<IXMLDOMAttribute> pAttribute;
    ASSERT_EQ(AttributeOf(RootOf(pDocument).Get(), L"b").QueryTo(pAttribute), S_OK);
    Bstr name;
    ASSERT_EQ(pAttribute->get_name(name.Put()), S_OK);
    EXPECT_EQ(name.View(), L"b");
    ASSERT_EQ(pAttribute->put_value(Variant(std::wstring_view(L"\"<2>\"")).Get()), S_OK);
    Variant value;
    ASSERT_EQ(pAttribute->get_value(value.Put()), S_OK);
    EXPECT_STREQ(value.Text(), L"\"<2>\"");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a b=\"&quot;&lt;2&gt;&quot;\"/>");
}

using KitProperties = KitDom;

TEST_F(KitProperties, TextKeepsWhiteSpaceWhereItIsPreserved) {
    const DocumentPtr pDocument =
        From(L"<a> <b xml:space=\"preserve\"> 1 <c> 2 </c><d xml:space=\"default\"> 3 </d></b></a>");
    EXPECT_EQ(TextOf(Find(pDocument.Get(), L"//b").Get()), L" 1  2  3 ");
    EXPECT_EQ(TextOf(Find(pDocument.Get(), L"//c").Get()), L" 2 ");
    EXPECT_EQ(TextOf(Find(pDocument.Get(), L"//d").Get()), L"3");
    ASSERT_EQ(pDocument->put_preserveWhiteSpace(VARIANT_TRUE), S_OK);
    EXPECT_EQ(TextOf(Find(pDocument.Get(), L"//d").Get()), L" 3 ");
}

TEST_F(KitProperties, PutTextOfNothingLeavesNoChild) {
    const DocumentPtr pDocument = From(L"<a>text</a>");
    ASSERT_EQ(RootOf(pDocument)->put_text(nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a/>");
}

TEST_F(KitProperties, AValueWithoutATextFormIsRefused) {
    const DocumentPtr pDocument = From(L"<a b=\"1\"/>");
    const Variant object(pDocument.Get());
    EXPECT_TRUE(FAILED(AttributeOf(RootOf(pDocument).Get(), L"b")->put_nodeValue(object.Get())));
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a b=\"1\"/>");
}

TEST_F(KitProperties, WhatIsNotOfferedSaysSo) {
    const DocumentPtr pDocument = From(L"<a/>");
    const ElementPtr pRoot = RootOf(pDocument);
    Bstr text;
    EXPECT_EQ(pRoot->transformNode(pRoot.Get(), text.Put()), E_NOTIMPL);
    EXPECT_EQ(pRoot->transformNode(pRoot.Get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->transformNodeToObject(pRoot.Get(), Variant().Get()), E_NOTIMPL);
    EXPECT_EQ(pRoot->put_dataType(Bstr(L"int").Get()), E_NOTIMPL);
    NodePtr pDefinition;
    EXPECT_EQ(pRoot->get_definition(pDefinition.Put()), S_FALSE);
    VARIANT_BOOL flag = VARIANT_FALSE;
    EXPECT_EQ(pRoot->get_specified(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_TRUE);
    flag = VARIANT_FALSE;
    EXPECT_EQ(pRoot->get_parsed(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_TRUE);
    EXPECT_EQ(pRoot->get_parsed(nullptr), E_INVALIDARG);
}

TEST_F(KitProperties, LateBindingIsNotOffered) {
    const DocumentPtr pDocument = From(L"<a/>");
    UINT count = 1;
    EXPECT_EQ(pDocument->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(pDocument->GetTypeInfoCount(nullptr), E_INVALIDARG);
    ComPtr<ITypeInfo> pInfo;
    EXPECT_EQ(pDocument->GetTypeInfo(0, 0, pInfo.Put()), E_NOTIMPL);
    DISPID id = 0;
    wchar_t name[] = L"xml";
    LPOLESTR names[] = {name};
    EXPECT_EQ(pDocument->GetIDsOfNames(IID_NULL, names, 1, 0, &id), E_NOTIMPL);
    DISPPARAMS parameters = {};
    EXPECT_EQ(pDocument->Invoke(0, IID_NULL, 0, DISPATCH_PROPERTYGET, &parameters, nullptr, nullptr, nullptr),
              E_NOTIMPL);
}

}  // namespace
}  // namespace devkit::msxml::tests
