#include "devkit/msxml/childlist.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

using Names = std::vector<std::wstring>;

Names NamesByIndex(const ListPtr& pList) {
    long length = 0;
    EXPECT_EQ(pList->get_length(&length), S_OK);
    Names names;
    for (long i = 0; i < length; ++i) {
        NodePtr pNode;
        EXPECT_EQ(pList->get_item(i, pNode.Put()), S_OK);
        names.push_back(NameOf(pNode.Get()));
    }
    return names;
}

class ChildNodes : public Conformance {};
RUN_FOR_BOTH_MAKERS(ChildNodes);

TEST_P(ChildNodes, GivesChildrenInOrder) {
    const DocumentPtr pDocument = From(L"<a><b/>text<c/><!--d--></a>");
    EXPECT_EQ(NamesByIndex(ChildrenOf(RootOf(pDocument).Get())), (Names{L"b", L"#text", L"c", L"#comment"}));
}

TEST_P(ChildNodes, ItemOutOfRangeIsSFalseAndNull) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    NodePtr pNode;
    EXPECT_EQ(pList->get_item(1, pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
    EXPECT_EQ(pList->get_item(-1, pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
}

TEST_P(ChildNodes, RefusesNullArguments) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: some methods fault for a null out-parameter";
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(RootOf(pDocument)->get_childNodes(nullptr), E_INVALIDARG);
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    EXPECT_EQ(pList->get_length(nullptr), E_INVALIDARG);
    EXPECT_EQ(pList->get_item(0, nullptr), E_INVALIDARG);
    EXPECT_EQ(pList->nextNode(nullptr), E_INVALIDARG);
}

TEST_P(ChildNodes, IsLive) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    ASSERT_EQ(RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"c").Get(), nullptr), S_OK);
    EXPECT_EQ(NamesByIndex(pList), (Names{L"b", L"c"}));
    ASSERT_EQ(RootOf(pDocument)->removeChild(ChildAt(RootOf(pDocument).Get(), 0).Get(), nullptr), S_OK);
    EXPECT_EQ(NamesByIndex(pList), Names{L"c"});
}

TEST_P(ChildNodes, NextNodeWalksOnce) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    NodePtr pNode;
    ASSERT_EQ(pList->nextNode(pNode.Put()), S_OK);
    EXPECT_EQ(NameOf(pNode.Get()), L"b");
    ASSERT_EQ(pList->nextNode(pNode.Put()), S_OK);
    EXPECT_EQ(NameOf(pNode.Get()), L"c");
    EXPECT_EQ(pList->nextNode(pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
    ASSERT_EQ(pList->reset(), S_OK);
    ASSERT_EQ(pList->nextNode(pNode.Put()), S_OK);
    EXPECT_EQ(NameOf(pNode.Get()), L"b");
}

TEST_P(ChildNodes, OfADocumentAreItsTopLevelNodes) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\"?><!--c--><?p d?><a/>");
    EXPECT_EQ(NamesByIndex(ChildrenOf(pDocument.Get())), (Names{L"xml", L"#comment", L"p", L"a"}));
}

TEST_P(ChildNodes, OfALeafIsAnEmptyList) {
    const DocumentPtr pDocument = From(L"<a>text</a>");
    EXPECT_EQ(NamesByIndex(ChildrenOf(ChildAt(RootOf(pDocument).Get(), 0).Get())), Names());
}

TEST_P(ChildNodes, OfAnAttributeIsItsText) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: gives no text node there";
    const DocumentPtr pDocument = From(L"<a b=\"c\"/>");
    const NodePtr pAttribute = AttributeOf(RootOf(pDocument).Get(), L"b");
    EXPECT_EQ(NamesByIndex(ChildrenOf(pAttribute.Get())), Names{L"#text"});
    EXPECT_EQ(ValueOf(ChildAt(pAttribute.Get(), 0).Get()), L"c");
}

using KitChildList = KitDom;

TEST_F(KitChildList, FindsEachIndexFromEachOther) {
    const DocumentPtr pDocument = From(L"<a><b0/><b1/><b2/><b3/><b4/><b5/><b6/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    for (long from = 0; from < 7; ++from) {
        for (long to = 0; to < 7; ++to) {
            NodePtr pNode;
            ASSERT_EQ(pList->get_item(from, pNode.Put()), S_OK);
            ASSERT_EQ(pList->get_item(to, pNode.Put()), S_OK);
            EXPECT_EQ(NameOf(pNode.Get()), L"b" + std::to_wstring(to)) << from;
        }
    }
}

TEST_F(KitChildList, ARememberedPlaceIsForgottenWithAChange) {
    const DocumentPtr pDocument = From(L"<a><b/><c/><d/></a>");
    const ElementPtr pRoot = RootOf(pDocument);
    const ListPtr pList = ChildrenOf(pRoot.Get());
    NodePtr pNode;
    ASSERT_EQ(pList->get_item(1, pNode.Put()), S_OK);
    ASSERT_EQ(pRoot->removeChild(pNode.Get(), nullptr), S_OK);
    pNode.Reset();
    ASSERT_EQ(pList->get_item(1, pNode.Put()), S_OK);
    EXPECT_EQ(NameOf(pNode.Get()), L"d");
}

TEST_F(KitChildList, RemovingTheCurrentNodeEndsTheWalk) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    const ElementPtr pRoot = RootOf(pDocument);
    const ListPtr pList = ChildrenOf(pRoot.Get());
    NodePtr pNode;
    ASSERT_EQ(pList->nextNode(pNode.Put()), S_OK);
    ASSERT_EQ(pRoot->removeChild(pNode.Get(), nullptr), S_OK);
    EXPECT_EQ(pList->nextNode(pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
}

TEST_F(KitChildList, NodesAppendedDuringTheWalkAreReached) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    NodePtr pNode;
    ASSERT_EQ(pList->nextNode(pNode.Put()), S_OK);
    ASSERT_EQ(RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"c").Get(), nullptr), S_OK);
    ASSERT_EQ(pList->nextNode(pNode.Put()), S_OK);
    EXPECT_EQ(NameOf(pNode.Get()), L"c");
}

TEST_F(KitChildList, TheListKeepsItsNode) {
    const ListPtr pList = ChildrenOf(RootOf(From(L"<a><b/></a>")).Get());
    EXPECT_EQ(NamesByIndex(pList), Names{L"b"});
}

TEST_F(KitChildList, EnumeratorIsNotOffered) {
    const DocumentPtr pDocument = From(L"<a/>");
    ComPtr<IUnknown> pEnumerator;
    EXPECT_EQ(ChildrenOf(pDocument.Get())->get__newEnum(pEnumerator.Put()), E_NOTIMPL);
    EXPECT_EQ(ChildrenOf(pDocument.Get())->get__newEnum(nullptr), E_INVALIDARG);
}

TEST_F(KitChildList, HasTheInterfacesOfAListOnly) {
    const DocumentPtr pDocument = From(L"<a/>");
    const ListPtr pList = ChildrenOf(pDocument.Get());
    ComPtr<IUnknown> pUnknown;
    EXPECT_EQ(pList.QueryTo(pUnknown), S_OK);
    ComPtr<IDispatch> pDispatch;
    EXPECT_EQ(pList.QueryTo(pDispatch), S_OK);
    NodePtr pNode;
    EXPECT_EQ(pList.QueryTo(pNode), E_NOINTERFACE);
    EXPECT_EQ(pList->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
}

}  // namespace
}  // namespace devkit::msxml::tests
