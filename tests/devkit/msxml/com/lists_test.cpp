#include "devkit/msxml/com/lists.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

using Names = std::vector<std::wstring>;

Names NamesByIndex(const ListPtr& pList) {
    long length = 0;
    EXPECT_EQ(S_OK, pList->get_length(&length));
    Names names;
    for (long i = 0; i < length; ++i) {
        NodePtr pNode;
        EXPECT_EQ(S_OK, pList->get_item(i, pNode.Put()));
        names.push_back(NameOf(pNode.Get()));
    }
    return names;
}

class ChildNodes : public Conformance {};
RUN_FOR_BOTH_MAKERS(ChildNodes);

TEST_P(ChildNodes, GivesChildrenInOrder) {
    const DocumentPtr pDocument = From(L"<a><b/>text<c/><!--d--></a>");
    EXPECT_EQ((Names{L"b", L"#text", L"c", L"#comment"}), NamesByIndex(ChildrenOf(RootOf(pDocument).Get())));
}

TEST_P(ChildNodes, ItemOutOfRangeIsSFalseAndNull) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    NodePtr pNode;
    EXPECT_EQ(S_FALSE, pList->get_item(1, pNode.Put()));
    EXPECT_FALSE(pNode);
    EXPECT_EQ(S_FALSE, pList->get_item(-1, pNode.Put()));
    EXPECT_FALSE(pNode);
}

TEST_P(ChildNodes, RefusesNullArguments) {
    if (HasGaps()) GTEST_SKIP() << "known gap: some methods fault for a null out-parameter";
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(E_INVALIDARG, RootOf(pDocument)->get_childNodes(nullptr));
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    EXPECT_EQ(E_INVALIDARG, pList->get_length(nullptr));
    EXPECT_EQ(E_INVALIDARG, pList->get_item(0, nullptr));
    EXPECT_EQ(E_INVALIDARG, pList->nextNode(nullptr));
}

TEST_P(ChildNodes, IsLive) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    ASSERT_EQ(S_OK, RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"c").Get(), nullptr));
    EXPECT_EQ((Names{L"b", L"c"}), NamesByIndex(pList));
    ASSERT_EQ(S_OK, RootOf(pDocument)->removeChild(ChildAt(RootOf(pDocument).Get(), 0).Get(), nullptr));
    EXPECT_EQ(Names{L"c"}, NamesByIndex(pList));
}

TEST_P(ChildNodes, NextNodeWalksOnceAndAgainAfterReset) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    EXPECT_EQ((Names{L"b", L"c"}), NamesByNextNode(pList));
    ASSERT_EQ(S_OK, pList->reset());
    EXPECT_EQ((Names{L"b", L"c"}), NamesByNextNode(pList));
}

TEST_P(ChildNodes, OfADocumentAreItsTopLevelNodes) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\"?><!--c--><?p d?><a/>");
    EXPECT_EQ((Names{L"xml", L"#comment", L"p", L"a"}), NamesByIndex(ChildrenOf(pDocument.Get())));
}

TEST_P(ChildNodes, OfALeafIsAnEmptyList) {
    const DocumentPtr pDocument = From(L"<a>text</a>");
    EXPECT_EQ(Names(), NamesByIndex(ChildrenOf(ChildAt(RootOf(pDocument).Get(), 0).Get())));
}

TEST_P(ChildNodes, OfAnAttributeIsItsText) {
    if (HasGaps()) GTEST_SKIP() << "known gap: gives no text node there";
    const DocumentPtr pDocument = From(L"<a b=\"c\"/>");
    const NodePtr pAttribute = AttributeOf(RootOf(pDocument).Get(), L"b");
    EXPECT_EQ(Names{L"#text"}, NamesByIndex(ChildrenOf(pAttribute.Get())));
    EXPECT_EQ(L"c", ValueOf(ChildAt(pAttribute.Get(), 0).Get()));
}

using KitChildList = KitDom;

TEST_F(KitChildList, FindsEachIndexFromEachOther) {
    const DocumentPtr pDocument = From(L"<a><b0/><b1/><b2/><b3/><b4/><b5/><b6/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    for (long from = 0; from < 7; ++from) {
        for (long to = 0; to < 7; ++to) {
            NodePtr pNode;
            ASSERT_EQ(S_OK, pList->get_item(from, pNode.Put()));
            ASSERT_EQ(S_OK, pList->get_item(to, pNode.Put()));
            EXPECT_EQ(L"b" + std::to_wstring(to), NameOf(pNode.Get())) << from;
        }
    }
}

TEST_F(KitChildList, ARememberedPlaceIsForgottenWithAChange) {
    const DocumentPtr pDocument = From(L"<a><b/><c/><d/></a>");
    const ElementPtr pRoot = RootOf(pDocument);
    const ListPtr pList = ChildrenOf(pRoot.Get());
    NodePtr pNode;
    ASSERT_EQ(S_OK, pList->get_item(1, pNode.Put()));
    ASSERT_EQ(S_OK, pRoot->removeChild(pNode.Get(), nullptr));
    pNode.Reset();
    ASSERT_EQ(S_OK, pList->get_item(1, pNode.Put()));
    EXPECT_EQ(L"d", NameOf(pNode.Get()));
}

TEST_F(KitChildList, RemovingTheCurrentNodeEndsTheWalk) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    const ElementPtr pRoot = RootOf(pDocument);
    const ListPtr pList = ChildrenOf(pRoot.Get());
    NodePtr pNode;
    ASSERT_EQ(S_OK, pList->nextNode(pNode.Put()));
    ASSERT_EQ(S_OK, pRoot->removeChild(pNode.Get(), nullptr));
    EXPECT_EQ(S_FALSE, pList->nextNode(pNode.Put()));
    EXPECT_FALSE(pNode);
}

TEST_F(KitChildList, NodesAppendedDuringTheWalkAreReached) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    NodePtr pNode;
    ASSERT_EQ(S_OK, pList->nextNode(pNode.Put()));
    ASSERT_EQ(S_OK, RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"c").Get(), nullptr));
    ASSERT_EQ(S_OK, pList->nextNode(pNode.Put()));
    EXPECT_EQ(L"c", NameOf(pNode.Get()));
}

TEST_F(KitChildList, TheListKeepsItsNode) {
    const ListPtr pList = ChildrenOf(RootOf(From(L"<a><b/></a>")).Get());
    EXPECT_EQ(Names{L"b"}, NamesByIndex(pList));
}

TEST_F(KitChildList, EnumeratorIsNotOffered) {
    const DocumentPtr pDocument = From(L"<a/>");
    ComPtr<IUnknown> pEnumerator;
    EXPECT_EQ(E_NOTIMPL, ChildrenOf(pDocument.Get())->get__newEnum(pEnumerator.Put()));
    EXPECT_EQ(E_INVALIDARG, ChildrenOf(pDocument.Get())->get__newEnum(nullptr));
}

TEST_F(KitChildList, HasTheInterfacesOfAListOnly) {
    const DocumentPtr pDocument = From(L"<a/>");
    const ListPtr pList = ChildrenOf(pDocument.Get());
    ComPtr<IUnknown> pUnknown;
    EXPECT_EQ(S_OK, pList.QueryTo(pUnknown));
    ComPtr<IDispatch> pDispatch;
    EXPECT_EQ(S_OK, pList.QueryTo(pDispatch));
    NodePtr pNode;
    EXPECT_EQ(E_NOINTERFACE, pList.QueryTo(pNode));
    EXPECT_EQ(E_POINTER, pList->QueryInterface(__uuidof(IUnknown), nullptr));
}

}  // namespace
}  // namespace devkit::msxml::tests
