#include "devkit/msxml/namednodemap.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

using Names = std::vector<std::wstring>;

class AttributeMap : public Conformance {
  protected:
    static constexpr const wchar_t* mixed =
        L"<a one=\"1\" xmlns:p=\"urn:p\" p:two=\"2\" xmlns=\"urn:d\" three=\"3\"/>";
};
RUN_FOR_BOTH_MAKERS(AttributeMap);

TEST_P(AttributeMap, CountsNamespaceDeclarations) {
    const DocumentPtr pDocument = From(mixed);
    long length = 0;
    ASSERT_EQ(AttributesOf(RootOf(pDocument).Get())->get_length(&length), S_OK);
    EXPECT_EQ(length, 5);
}

TEST_P(AttributeMap, WalksDeclarationsAndAttributesInDocumentOrder) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: nextNode skips namespace declarations";
    const DocumentPtr pDocument = From(mixed);
    EXPECT_EQ(NamesByNextNode(AttributesOf(RootOf(pDocument).Get())),
              (Names{L"one", L"xmlns:p", L"p:two", L"xmlns", L"three"}));
}

TEST_P(AttributeMap, ItemsByIndexAreTheSameInTheSameOrder) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: get_item puts declarations last and fails for a plain xmlns";
    const DocumentPtr pDocument = From(mixed);
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    Names names;
    for (long i = 0; i < 5; ++i) {
        NodePtr pNode;
        ASSERT_EQ(pMap->get_item(i, pNode.Put()), S_OK);
        names.push_back(NameOf(pNode.Get()));
    }
    EXPECT_EQ(names, (Names{L"one", L"xmlns:p", L"p:two", L"xmlns", L"three"}));
}

TEST_P(AttributeMap, ItemOutOfRangeIsSFalseAndNull) {
    const DocumentPtr pDocument = From(L"<a one=\"1\"/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    NodePtr pNode;
    EXPECT_EQ(pMap->get_item(1, pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
    EXPECT_EQ(pMap->get_item(-1, pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
}

TEST_P(AttributeMap, NextNodeStaysBehindTheLastUntilReset) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: nextNode starts again behind the last";
    const DocumentPtr pDocument = From(L"<a one=\"1\" two=\"2\"/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    EXPECT_EQ(NamesByNextNode(pMap), (Names{L"one", L"two"}));
    EXPECT_EQ(NamesByNextNode(pMap), Names());
    ASSERT_EQ(pMap->reset(), S_OK);
    EXPECT_EQ(NamesByNextNode(pMap), (Names{L"one", L"two"}));
}

TEST_P(AttributeMap, GetItemDoesNotMoveNextNode) {
    const DocumentPtr pDocument = From(L"<a one=\"1\" two=\"2\" three=\"3\"/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    NodePtr pNode;
    ASSERT_EQ(pMap->nextNode(pNode.Put()), S_OK);
    ASSERT_EQ(pMap->get_item(2, pNode.Put()), S_OK);
    ASSERT_EQ(pMap->nextNode(pNode.Put()), S_OK);
    EXPECT_EQ(NameOf(pNode.Get()), L"two");
}

TEST_P(AttributeMap, RemovingTheCurrentNodeEndsTheWalk) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: nextNode goes by index";
    const DocumentPtr pDocument = From(L"<a one=\"1\" two=\"2\" three=\"3\"/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    NodePtr pNode;
    ASSERT_EQ(pMap->nextNode(pNode.Put()), S_OK);
    ASSERT_EQ(pMap->removeNamedItem(Bstr(L"one").Get(), nullptr), S_OK);
    EXPECT_EQ(pMap->nextNode(pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
    ASSERT_EQ(pMap->reset(), S_OK);
    EXPECT_EQ(NamesByNextNode(pMap), (Names{L"two", L"three"}));
}

TEST_P(AttributeMap, AnEmptyMapEndsAtOnce) {
    const DocumentPtr pDocument = From(L"<a/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    EXPECT_EQ(NamesByNextNode(pMap), Names());
    NodePtr pNode;
    EXPECT_EQ(pMap->get_item(0, pNode.Put()), S_FALSE);
}

TEST_P(AttributeMap, DescribesAPrefixedDeclaration) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: getNamedItem skips namespace declarations";
    const DocumentPtr pDocument = From(L"<a xmlns:p=\"urn:p\"/>");
    const NodePtr pNode = AttributeOf(RootOf(pDocument).Get(), L"xmlns:p");
    EXPECT_EQ(NameOf(pNode.Get()), L"xmlns:p");
    EXPECT_EQ(PrefixOf(pNode.Get()), L"xmlns");
    EXPECT_EQ(BaseNameOf(pNode.Get()), L"p");
    EXPECT_EQ(UriOf(pNode.Get()), L"http://www.w3.org/2000/xmlns/");
    EXPECT_EQ(ValueOf(pNode.Get()), L"urn:p");
    EXPECT_EQ(TextOf(pNode.Get()), L"urn:p");
}

TEST_P(AttributeMap, DescribesADefaultDeclaration) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: getNamedItem skips namespace declarations";
    const DocumentPtr pDocument = From(L"<a xmlns=\"urn:d\"/>");
    const NodePtr pNode = AttributeOf(RootOf(pDocument).Get(), L"xmlns");
    EXPECT_EQ(NameOf(pNode.Get()), L"xmlns");
    EXPECT_EQ(PrefixOf(pNode.Get()), L"<none>");
    EXPECT_EQ(BaseNameOf(pNode.Get()), L"xmlns");
    EXPECT_EQ(UriOf(pNode.Get()), L"http://www.w3.org/2000/xmlns/");
    EXPECT_EQ(ValueOf(pNode.Get()), L"urn:d");
}

TEST_P(AttributeMap, DescribesOrdinaryAttributes) {
    const DocumentPtr pDocument = From(mixed);
    const ElementPtr pRoot = RootOf(pDocument);
    const NodePtr pPlain = AttributeOf(pRoot.Get(), L"three");
    EXPECT_EQ(PrefixOf(pPlain.Get()), L"<none>");
    EXPECT_EQ(UriOf(pPlain.Get()), L"<none>");
    EXPECT_EQ(BaseNameOf(pPlain.Get()), L"three");
    const NodePtr pPrefixed = AttributeOf(pRoot.Get(), L"p:two");
    EXPECT_EQ(PrefixOf(pPrefixed.Get()), L"p");
    EXPECT_EQ(UriOf(pPrefixed.Get()), L"urn:p");
    EXPECT_EQ(BaseNameOf(pPrefixed.Get()), L"two");
}

TEST_P(AttributeMap, AnAttributeHasNoParentAndNoSiblings) {
    const DocumentPtr pDocument = From(L"<a one=\"1\" two=\"2\"/>");
    const NodePtr pNode = AttributeOf(RootOf(pDocument).Get(), L"one");
    NodePtr pOther;
    EXPECT_EQ(pNode->get_parentNode(pOther.Put()), S_FALSE);
    EXPECT_FALSE(pOther);
    EXPECT_EQ(pNode->get_nextSibling(pOther.Put()), S_FALSE);
    EXPECT_EQ(pNode->get_previousSibling(pOther.Put()), S_FALSE);
}

TEST_P(AttributeMap, GetNamedItemOfNoneIsSFalseAndNull) {
    const DocumentPtr pDocument = From(mixed);
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    NodePtr pNode;
    EXPECT_EQ(pMap->getNamedItem(Bstr(L"four").Get(), pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
    EXPECT_EQ(pMap->getNamedItem(Bstr(L"ONE").Get(), pNode.Put()), S_FALSE);
}

TEST_P(AttributeMap, GetNamedItemRefusesNullArguments) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: some methods fault for a null out-parameter";
    const DocumentPtr pDocument = From(mixed);
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    NodePtr pNode;
    EXPECT_EQ(pMap->getNamedItem(nullptr, pNode.Put()), E_INVALIDARG);
    EXPECT_FALSE(pNode);
    EXPECT_EQ(pMap->getNamedItem(Bstr(L"one").Get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(pMap->get_length(nullptr), E_INVALIDARG);
    EXPECT_EQ(pMap->get_item(0, nullptr), E_INVALIDARG);
}

TEST_P(AttributeMap, GetQualifiedItemFindsByNamespace) {
    const DocumentPtr pDocument = From(mixed);
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    NodePtr pNode;
    ASSERT_EQ(pMap->getQualifiedItem(Bstr(L"two").Get(), Bstr(L"urn:p").Get(), pNode.Put()), S_OK);
    EXPECT_EQ(NameOf(pNode.Get()), L"p:two");
    ASSERT_EQ(pMap->getQualifiedItem(Bstr(L"one").Get(), nullptr, pNode.Put()), S_OK);
    EXPECT_EQ(NameOf(pNode.Get()), L"one");
    EXPECT_EQ(pMap->getQualifiedItem(Bstr(L"two").Get(), nullptr, pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
}

TEST_P(AttributeMap, GetQualifiedItemFindsADeclaration) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: getQualifiedItem skips namespace declarations";
    const DocumentPtr pDocument = From(mixed);
    NodePtr pNode;
    ASSERT_EQ(
        AttributesOf(RootOf(pDocument).Get())
            ->getQualifiedItem(Bstr(L"p").Get(), Bstr(L"http://www.w3.org/2000/xmlns/").Get(), pNode.Put()),
        S_OK);
    EXPECT_EQ(NameOf(pNode.Get()), L"xmlns:p");
}

TEST_P(AttributeMap, SetNamedItemAddsAndGivesTheNewAttribute) {
    const DocumentPtr pDocument = From(L"<a one=\"1\"/>");
    const NodePtr pNew = MakeNode(pDocument, NODE_ATTRIBUTE, L"two");
    ASSERT_EQ(pNew->put_nodeValue(Variant(std::wstring_view(L"2")).Get()), S_OK);
    NodePtr pSet;
    ASSERT_EQ(AttributesOf(RootOf(pDocument).Get())->setNamedItem(pNew.Get(), pSet.Put()), S_OK);
    EXPECT_EQ(NameOf(pSet.Get()), L"two");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a one=\"1\" two=\"2\"/>");
}

TEST_P(AttributeMap, SetNamedItemReplacesInPlace) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: the new attribute goes last";
    const DocumentPtr pDocument = From(L"<a one=\"1\" two=\"2\" three=\"3\"/>");
    const NodePtr pNew = MakeNode(pDocument, NODE_ATTRIBUTE, L"two");
    ASSERT_EQ(pNew->put_text(Bstr(L"II").Get()), S_OK);
    ASSERT_EQ(AttributesOf(RootOf(pDocument).Get())->setNamedItem(pNew.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a one=\"1\" two=\"II\" three=\"3\"/>");
}

TEST_P(AttributeMap, SetNamedItemOfADeclarationDeclares) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: a declaration that is set is an ordinary attribute";
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const NodePtr pNew = MakeNode(pDocument, NODE_ATTRIBUTE, L"xmlns:krk");
    ASSERT_EQ(pNew->put_text(Bstr(L"urn:krk").Get()), S_OK);
    ASSERT_EQ(AttributesOf(RootOf(pDocument).Get())->setNamedItem(pNew.Get(), nullptr), S_OK);
    const NodePtr pChild = MakeNode(pDocument, NODE_ELEMENT, L"krk:c", L"urn:krk");
    ASSERT_EQ(RootOf(pDocument)->appendChild(pChild.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a xmlns:krk=\"urn:krk\"><b/><krk:c/></a>");
    ComPtr<IXMLDOMElement> pInner;
    ASSERT_EQ(ChildAt(RootOf(pDocument).Get(), 0).QueryTo(pInner), S_OK);
    ASSERT_EQ(pInner->setAttribute(Bstr(L"krk:x").Get(), Variant(std::wstring_view(L"1")).Get()), S_OK);
    EXPECT_EQ(UriOf(AttributeOf(pInner.Get(), L"krk:x").Get()), L"urn:krk");
}

TEST_P(AttributeMap, SetNamedItemReplacesADeclaration) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: a declaration that is set is an ordinary attribute";
    const DocumentPtr pDocument = From(L"<a xmlns:p=\"urn:1\" b=\"2\"/>");
    const NodePtr pNew = MakeNode(pDocument, NODE_ATTRIBUTE, L"xmlns:p");
    ASSERT_EQ(pNew->put_text(Bstr(L"urn:2").Get()), S_OK);
    ASSERT_EQ(AttributesOf(RootOf(pDocument).Get())->setNamedItem(pNew.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a xmlns:p=\"urn:2\" b=\"2\"/>");
}

TEST_P(AttributeMap, SetNamedItemTakesAttributesOnly) {
    const DocumentPtr pDocument = From(L"<a/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    const NodePtr pElement = MakeNode(pDocument, NODE_ELEMENT, L"b");
    EXPECT_EQ(pMap->setNamedItem(pElement.Get(), nullptr), E_FAIL);
    EXPECT_EQ(pMap->setNamedItem(nullptr, nullptr), E_INVALIDARG);
}

TEST_P(AttributeMap, SetNamedItemRefusesAnAttributeOfAnotherElement) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: takes the attribute away from its element";
    const DocumentPtr pDocument = From(L"<a b=\"1\"><c/></a>");
    const NodePtr pOwned = AttributeOf(RootOf(pDocument).Get(), L"b");
    const NodePtr pChild = ChildAt(RootOf(pDocument).Get(), 0);
    EXPECT_EQ(AttributesOf(pChild.Get())->setNamedItem(pOwned.Get(), nullptr), E_FAIL);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a b=\"1\"><c/></a>");
}

TEST_P(AttributeMap, RemoveNamedItemGivesTheAttributeWhichStaysUsable) {
    const DocumentPtr pDocument = From(L"<a one=\"1\" two=\"2\"/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    NodePtr pRemoved;
    ASSERT_EQ(pMap->removeNamedItem(Bstr(L"one").Get(), pRemoved.Put()), S_OK);
    EXPECT_EQ(NameOf(pRemoved.Get()), L"one");
    EXPECT_EQ(ValueOf(pRemoved.Get()), L"1");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a two=\"2\"/>");
    EXPECT_EQ(pMap->removeNamedItem(Bstr(L"one").Get(), pRemoved.Put()), S_FALSE);
    EXPECT_FALSE(pRemoved);
    EXPECT_EQ(pMap->removeNamedItem(nullptr, nullptr), E_INVALIDARG);
}

TEST_P(AttributeMap, RemoveQualifiedItemFindsByNamespace) {
    const DocumentPtr pDocument = From(L"<a xmlns:p=\"urn:p\" p:x=\"1\" x=\"2\"/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    NodePtr pRemoved;
    ASSERT_EQ(pMap->removeQualifiedItem(Bstr(L"x").Get(), Bstr(L"urn:p").Get(), pRemoved.Put()), S_OK);
    EXPECT_EQ(ValueOf(pRemoved.Get()), L"1");
    EXPECT_EQ(pMap->removeQualifiedItem(Bstr(L"x").Get(), Bstr(L"urn:p").Get(), pRemoved.Put()), S_FALSE);
    EXPECT_EQ(pMap->removeQualifiedItem(nullptr, nullptr, nullptr), E_INVALIDARG);
}

TEST_P(AttributeMap, IsLive) {
    const DocumentPtr pDocument = From(L"<a/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    ASSERT_EQ(RootOf(pDocument)->setAttribute(Bstr(L"b").Get(), Variant(std::wstring_view(L"1")).Get()),
              S_OK);
    long length = 0;
    ASSERT_EQ(pMap->get_length(&length), S_OK);
    EXPECT_EQ(length, 1);
}

TEST_P(AttributeMap, OnlyElementsHaveOne) {
    const DocumentPtr pDocument = From(L"<a>t<!--c--><?p d?></a>");
    for (long i = 0; i < 3; ++i) {
        MapPtr pMap;
        EXPECT_EQ(ChildAt(RootOf(pDocument).Get(), i)->get_attributes(pMap.Put()), S_FALSE) << i;
        EXPECT_FALSE(pMap);
    }
    MapPtr pMap;
    EXPECT_EQ(pDocument->get_attributes(pMap.Put()), S_FALSE);
    EXPECT_EQ(pDocument->get_attributes(nullptr), E_INVALIDARG);
}

using KitMap = KitDom;

TEST_F(KitMap, TheMapKeepsItsElement) {
    MapPtr pMap = AttributesOf(RootOf(From(L"<a b=\"1\"/>")).Get());
    EXPECT_EQ(NamesByNextNode(pMap), Names{L"b"});
}

TEST_F(KitMap, AReplacedAttributeUnderTheCursorEndsTheWalk) {
    const DocumentPtr pDocument = From(L"<a b=\"1\" c=\"2\"/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    NodePtr pNode;
    ASSERT_EQ(pMap->nextNode(pNode.Put()), S_OK);
    ASSERT_EQ(pMap->setNamedItem(MakeNode(pDocument, NODE_ATTRIBUTE, L"b").Get(), nullptr), S_OK);
    EXPECT_EQ(pMap->nextNode(pNode.Put()), S_FALSE);
}

TEST_F(KitMap, ReplacesByNamespaceWhateverThePrefix) {
    const DocumentPtr pDocument = From(L"<a xmlns:p=\"urn:n\" p:x=\"1\"/>");
    const NodePtr pNew = MakeNode(pDocument, NODE_ATTRIBUTE, L"q:x", L"urn:n");
    ASSERT_EQ(AttributesOf(RootOf(pDocument).Get())->setNamedItem(pNew.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a xmlns:q=\"urn:n\" xmlns:p=\"urn:n\" q:x=\"\"/>");
}

TEST_F(KitMap, RefusesASecondMeaningOfAPrefix) {
    const DocumentPtr pDocument = From(L"<p:a xmlns:p=\"urn:1\" xmlns:q=\"urn:q\" q:x=\"1\"/>");
    const MapPtr pMap = AttributesOf(RootOf(pDocument).Get());
    const NodePtr pDeclaration = MakeNode(pDocument, NODE_ATTRIBUTE, L"xmlns:p");
    ASSERT_EQ(pDeclaration->put_text(Bstr(L"urn:2").Get()), S_OK);
    EXPECT_EQ(pMap->setNamedItem(pDeclaration.Get(), nullptr), E_INVALIDARG);
    const NodePtr pOther = MakeNode(pDocument, NODE_ATTRIBUTE, L"xmlns:q");
    ASSERT_EQ(pOther->put_text(Bstr(L"urn:2").Get()), S_OK);
    EXPECT_EQ(pMap->setNamedItem(pOther.Get(), nullptr), E_INVALIDARG);
    const NodePtr pAttribute = MakeNode(pDocument, NODE_ATTRIBUTE, L"p:x", L"urn:2");
    EXPECT_EQ(pMap->setNamedItem(pAttribute.Get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(AttributeOf(RootOf(pDocument).Get(), L"xmlns:p")->put_text(Bstr(L"urn:2").Get()), E_INVALIDARG);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<p:a xmlns:p=\"urn:1\" xmlns:q=\"urn:q\" q:x=\"1\"/>");
}

TEST_F(KitMap, ADeclarationMayGetItsValueLater) {
    const DocumentPtr pDocument = From(L"<p:a xmlns:p=\"urn:1\"/>");
    const NodePtr pDeclaration = MakeNode(pDocument, NODE_ATTRIBUTE, L"xmlns:p");
    ASSERT_EQ(AttributesOf(RootOf(pDocument).Get())->setNamedItem(pDeclaration.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<p:a xmlns:p=\"urn:1\"/>");
    EXPECT_EQ(pDeclaration->put_text(Bstr(L"urn:2").Get()), E_INVALIDARG);
    EXPECT_EQ(pDeclaration->put_text(Bstr(L"urn:1").Get()), S_OK);
}

TEST_F(KitMap, EnumeratorIsNotOffered) {
    const DocumentPtr pDocument = From(L"<a/>");
    ComPtr<IUnknown> pEnumerator;
    EXPECT_EQ(AttributesOf(RootOf(pDocument).Get())->get__newEnum(pEnumerator.Put()), E_NOTIMPL);
    EXPECT_EQ(AttributesOf(RootOf(pDocument).Get())->get__newEnum(nullptr), E_INVALIDARG);
    EXPECT_EQ(AttributesOf(RootOf(pDocument).Get())->nextNode(nullptr), E_INVALIDARG);
}

TEST_F(KitMap, RefusesAnAttributeOfAnotherLibrary) {
    const DocumentPtr pForeign = NewDocument(Maker::System);
    const NodePtr pAttribute = MakeNode(pForeign, NODE_ATTRIBUTE, L"b");
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(AttributesOf(RootOf(pDocument).Get())->setNamedItem(pAttribute.Get(), nullptr), E_FAIL);
}

}  // namespace
}  // namespace devkit::msxml::tests
