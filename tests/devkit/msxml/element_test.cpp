#include "devkit/msxml/element.h"

#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/errorcodes.h"

namespace devkit::msxml::tests {
namespace {

HRESULT Set(const ElementPtr& pElement, std::wstring_view name, std::wstring_view value) {
    return pElement->setAttribute(Bstr(name).Get(), Variant(value).Get());
}

std::wstring Get(const ElementPtr& pElement, std::wstring_view name) {
    Variant value;
    const HRESULT result = pElement->getAttribute(Bstr(name).Get(), value.Put());
    EXPECT_TRUE((result == S_OK && value.Type() == VT_BSTR) ||
                (result == S_FALSE && value.Type() == VT_NULL));
    return result == S_OK ? std::wstring(value.Text(), SysStringLen(value.Text())) : L"<none>";
}

class ElementMethods : public Conformance {};
RUN_FOR_BOTH_MAKERS(ElementMethods);

TEST_P(ElementMethods, TagNameIsTheQualifiedName) {
    const ElementPtr pRoot = RootOf(From(L"<p:a xmlns:p=\"urn:p\"/>"));
    Bstr name;
    ASSERT_EQ(pRoot->get_tagName(name.Put()), S_OK);
    EXPECT_EQ(name.View(), L"p:a");
}

TEST_P(ElementMethods, GetAttribute) {
    const ElementPtr pRoot = RootOf(From(L"<a b=\"1\" xmlns:p=\"urn:p\" p:c=\"2\"/>"));
    EXPECT_EQ(Get(pRoot, L"b"), L"1");
    EXPECT_EQ(Get(pRoot, L"p:c"), L"2");
    EXPECT_EQ(Get(pRoot, L"xmlns:p"), L"urn:p");
    EXPECT_EQ(Get(pRoot, L"c"), L"<none>");
}

TEST_P(ElementMethods, GetAttributeOfADefaultDeclaration) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: does not find a plain xmlns";
    EXPECT_EQ(Get(RootOf(From(L"<a xmlns=\"urn:d\"/>")), L"xmlns"), L"urn:d");
}

TEST_P(ElementMethods, SetAttributeAddsAndChanges) {
    const ElementPtr pRoot = RootOf(From(L"<a b=\"1\"/>"));
    EXPECT_EQ(Set(pRoot, L"c", L"2"), S_OK);
    EXPECT_EQ(Set(pRoot, L"b", L"3"), S_OK);
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<a b=\"3\" c=\"2\"/>");
}

TEST_P(ElementMethods, SetAttributeTakesNumbers) {
    const ElementPtr pRoot = RootOf(From(L"<a/>"));
    EXPECT_EQ(pRoot->setAttribute(Bstr(L"b").Get(), Variant(LONG{-42}).Get()), S_OK);
    EXPECT_EQ(Get(pRoot, L"b"), L"-42");
}

TEST_P(ElementMethods, SetAttributeFindsThePrefix) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: the attribute stays without a namespace";
    const DocumentPtr pDocument = From(L"<p:a xmlns:p=\"urn:p\"><b/></p:a>");
    ElementPtr pInner;
    ASSERT_EQ(ChildAt(RootOf(pDocument).Get(), 0).QueryTo(pInner), S_OK);
    ASSERT_EQ(Set(pInner, L"p:c", L"1"), S_OK);
    EXPECT_EQ(UriOf(AttributeOf(pInner.Get(), L"p:c").Get()), L"urn:p");
}

TEST_P(ElementMethods, RemoveAttribute) {
    const ElementPtr pRoot = RootOf(From(L"<a b=\"1\" c=\"2\"/>"));
    EXPECT_EQ(pRoot->removeAttribute(Bstr(L"b").Get()), S_OK);
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<a c=\"2\"/>");
    EXPECT_EQ(pRoot->removeAttribute(Bstr(L"b").Get()), S_FALSE);
}

TEST_P(ElementMethods, GetAttributeNode) {
    const ElementPtr pRoot = RootOf(From(L"<a b=\"1\"/>"));
    ComPtr<IXMLDOMAttribute> pAttribute;
    ASSERT_EQ(pRoot->getAttributeNode(Bstr(L"b").Get(), pAttribute.Put()), S_OK);
    EXPECT_EQ(ValueOf(pAttribute.Get()), L"1");
    EXPECT_EQ(pRoot->getAttributeNode(Bstr(L"c").Get(), pAttribute.Put()), S_FALSE);
    EXPECT_FALSE(pAttribute);
}

TEST_P(ElementMethods, SetAttributeNodeOfANewName) {
    const DocumentPtr pDocument = From(L"<a/>");
    ComPtr<IXMLDOMAttribute> pAttribute;
    ASSERT_EQ(pDocument->createAttribute(Bstr(L"b").Get(), pAttribute.Put()), S_OK);
    ASSERT_EQ(pAttribute->put_value(Variant(std::wstring_view(L"1")).Get()), S_OK);
    ComPtr<IXMLDOMAttribute> pOld;
    ASSERT_EQ(RootOf(pDocument)->setAttributeNode(pAttribute.Get(), pOld.Put()), S_OK);
    EXPECT_FALSE(pOld);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a b=\"1\"/>");
}

TEST_P(ElementMethods, SetAttributeNodeGivesTheReplacedOne) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: does not give the old attribute";
    const DocumentPtr pDocument = From(L"<a b=\"1\"/>");
    ComPtr<IXMLDOMAttribute> pAttribute;
    ASSERT_EQ(pDocument->createAttribute(Bstr(L"b").Get(), pAttribute.Put()), S_OK);
    ComPtr<IXMLDOMAttribute> pOld;
    ASSERT_EQ(RootOf(pDocument)->setAttributeNode(pAttribute.Get(), pOld.Put()), S_OK);
    EXPECT_EQ(ValueOf(pOld.Get()), L"1");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a b=\"\"/>");
}

TEST_P(ElementMethods, SetAttributeNodeRefusesOneInUse) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: takes the attribute of another element";
    const DocumentPtr pDocument = From(L"<a b=\"1\"><c/></a>");
    ComPtr<IXMLDOMAttribute> pAttribute;
    ASSERT_EQ(RootOf(pDocument)->getAttributeNode(Bstr(L"b").Get(), pAttribute.Put()), S_OK);
    ElementPtr pInner;
    ASSERT_EQ(ChildAt(RootOf(pDocument).Get(), 0).QueryTo(pInner), S_OK);
    EXPECT_EQ(pInner->setAttributeNode(pAttribute.Get(), nullptr), E_FAIL);
    EXPECT_EQ(pInner->setAttributeNode(nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a b=\"1\"><c/></a>");
}

TEST_P(ElementMethods, ADeclarationCannotChangeTheElementsOwnNamespace) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: lets a prefix be declared again";
    const ElementPtr pDefault = RootOf(From(L"<a xmlns=\"urn:1\"/>"));
    EXPECT_EQ(Set(pDefault, L"xmlns", L"urn:2"), E_INVALIDARG);
    EXPECT_EQ(Set(pDefault, L"xmlns", L"urn:1"), S_OK);
    const ElementPtr pPrefixed = RootOf(From(L"<p:a xmlns:p=\"urn:1\"/>"));
    EXPECT_EQ(Set(pPrefixed, L"xmlns:p", L"urn:2"), E_INVALIDARG);
    EXPECT_EQ(Set(pPrefixed, L"xmlns:q", L"urn:2"), S_OK);
}

using KitElement = KitDom;

TEST_F(KitElement, RefusesNullArguments) {
    const ElementPtr pRoot = RootOf(From(L"<a b=\"1\"/>"));
    Variant value;
    EXPECT_EQ(pRoot->getAttribute(nullptr, value.Put()), E_INVALIDARG);
    EXPECT_EQ(pRoot->getAttribute(Bstr(L"b").Get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->setAttribute(nullptr, value.Get()), E_INVALIDARG);
    EXPECT_EQ(pRoot->removeAttribute(nullptr), E_INVALIDARG);
    ComPtr<IXMLDOMAttribute> pAttribute;
    EXPECT_EQ(pRoot->getAttributeNode(nullptr, pAttribute.Put()), E_INVALIDARG);
    EXPECT_EQ(pRoot->getAttributeNode(Bstr(L"b").Get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->removeAttributeNode(nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(pRoot->getElementsByTagName(Bstr(L"*").Get(), nullptr), E_INVALIDARG);
}

TEST_F(KitElement, SetAttributeRefusesABadNameOrPrefix) {
    const ElementPtr pRoot = RootOf(From(L"<a/>"));
    EXPECT_EQ(Set(pRoot, L"q:b", L"1"), Hresult(XmlPrefixUndeclared));
    EXPECT_EQ(Set(pRoot, L"1", L"1"), Hresult(XmlBadStartNameChar));
    EXPECT_EQ(Set(pRoot, L"b c", L"1"), Hresult(XmlBadNameChar));
    EXPECT_EQ(Set(pRoot, L"", L"1"), Hresult(XmlBadStartNameChar));
    EXPECT_EQ(pRoot->setAttribute(Bstr(L"b").Get(), Variant(pRoot.Get()).Get()), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<a/>");
}

TEST_F(KitElement, SetAttributeKnowsAPrefixByTheNamesAbove) {
    const DocumentPtr pDocument = New();
    const NodePtr pRoot = MakeNode(pDocument, NODE_ELEMENT, L"p:a", L"urn:p");
    ASSERT_EQ(pDocument->appendChild(pRoot.Get(), nullptr), S_OK);
    EXPECT_EQ(Set(RootOf(pDocument), L"p:b", L"1"), S_OK);
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<p:a xmlns:p=\"urn:p\" p:b=\"1\"/>");
}

TEST_F(KitElement, RemoveAttributeNodeGivesIt) {
    const ElementPtr pRoot = RootOf(From(L"<a b=\"1\"/>"));
    ComPtr<IXMLDOMAttribute> pAttribute;
    ASSERT_EQ(pRoot->getAttributeNode(Bstr(L"b").Get(), pAttribute.Put()), S_OK);
    ComPtr<IXMLDOMAttribute> pRemoved;
    ASSERT_EQ(pRoot->removeAttributeNode(pAttribute.Get(), pRemoved.Put()), S_OK);
    EXPECT_EQ(pRemoved.Get(), pAttribute.Get());
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<a/>");
    EXPECT_EQ(pRoot->removeAttributeNode(pAttribute.Get(), nullptr), E_INVALIDARG);
}

TEST_F(KitElement, NormalizeJoinsTextAndDropsEmptyText) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const ElementPtr pRoot = RootOf(pDocument);
    const auto append = [&](IXMLDOMNode* pParent, std::wstring_view text) {
        const NodePtr pText = MakeNode(pDocument, NODE_TEXT, L"");
        ASSERT_EQ(pText->put_text(Bstr(text).Get()), S_OK);
        ASSERT_EQ(pParent->appendChild(pText.Get(), nullptr), S_OK);
    };
    const NodePtr pInner = ChildAt(pRoot.Get(), 0);
    append(pInner.Get(), L"");
    append(pInner.Get(), L"");
    append(pRoot.Get(), L"one");
    append(pRoot.Get(), L"");
    append(pRoot.Get(), L"two");
    ASSERT_EQ(pRoot->normalize(), S_OK);
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<a><b/>onetwo</a>");
    long length = 0;
    ASSERT_EQ(ChildrenOf(pRoot.Get())->get_length(&length), S_OK);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(ValueOf(ChildAt(pRoot.Get(), 1).Get()), L"onetwo");
}

}  // namespace
}  // namespace devkit::msxml::tests
