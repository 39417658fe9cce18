#include <functional>

#include "devkit/msxml/domdocument.h"
#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/node.h"

namespace devkit::msxml::tests {
namespace {

// The references on an object, without changing them.
ULONG References(IUnknown* pObject) {
    pObject->AddRef();
    return pObject->Release();
}

using Lifetime = KitDom;

TEST_F(Lifetime, AnyNodeKeepsItsDocument) {
    const wchar_t* const text = L"<a b=\"1\">t<!--c--><?p d?><d><e/></d></a>";
    for (const wchar_t* query : {L"/", L"/a", L"/a/@b", L"/a/text()", L"/a/comment()", L"//e"}) {
        NodePtr pNode = Find(From(text).Get(), query);
        ASSERT_TRUE(pNode) << query;
        ComPtr<IXMLDOMDocument> pOwner;
        const HRESULT result = pNode->get_ownerDocument(pOwner.Put());
        EXPECT_EQ(result, pOwner ? S_OK : S_FALSE);
        NodePtr pTop = pNode;
        for (NodePtr pParent; pTop->get_parentNode(pParent.Put()) == S_OK;) pTop = pParent;
        const IXMLDOMNode* const pDocument = pOwner ? static_cast<IXMLDOMNode*>(pOwner.Get()) : pNode.Get();
        EXPECT_TRUE(pTop.Get() == pDocument || std::wstring_view(query) == L"/a/@b");
    }
}

TEST_F(Lifetime, ADetachedNodeKeepsItsDocument) {
    NodePtr pNode = MakeNode(From(L"<a/>"), NODE_ELEMENT, L"b");
    ComPtr<IXMLDOMDocument> pOwner;
    ASSERT_EQ(pNode->get_ownerDocument(pOwner.Put()), S_OK);
    EXPECT_EQ(XmlOf(pOwner.Get()), L"<a/>\r\n");
    pOwner.Reset();
    pNode.Reset();
    EXPECT_EQ(LiveObjectCount(), 0);
}

TEST_F(Lifetime, ADetachedTreeLivesAsLongAsOneOfItsNodesIsHeld) {
    const DocumentPtr pDocument = From(L"<a><b><c d=\"1\"><e/></c></b></a>");
    NodePtr pInner = Find(pDocument.Get(), L"//e");
    const long before = LiveObjectCount();
    ASSERT_EQ(RootOf(pDocument)->removeChild(ChildAt(RootOf(pDocument).Get(), 0).Get(), nullptr), S_OK);
    EXPECT_EQ(LiveObjectCount(), before);
    NodePtr pParent;
    ASSERT_EQ(pInner->get_parentNode(pParent.Put()), S_OK);
    EXPECT_EQ(XmlOf(pParent.Get()), L"<c d=\"1\"><e/></c>");
    pInner.Reset();
    pParent.Reset();
    EXPECT_EQ(LiveObjectCount(), before - 5);
}

TEST_F(Lifetime, ANodeThatNobodyHoldsGoesWithItsRemoval) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    const long before = LiveObjectCount();
    ASSERT_EQ(RootOf(pDocument)->removeChild(ChildAt(RootOf(pDocument).Get(), 0).Get(), nullptr), S_OK);
    EXPECT_EQ(LiveObjectCount(), before - 1);
}

TEST_F(Lifetime, AnAttributesTextKeepsTheElement) {
    NodePtr pText;
    {
        const DocumentPtr pDocument = From(L"<a b=\"1\"/>");
        pText = ChildAt(AttributeOf(RootOf(pDocument).Get(), L"b").Get(), 0);
    }
    NodePtr pAttribute;
    ASSERT_EQ(pText->get_parentNode(pAttribute.Put()), S_OK);
    EXPECT_EQ(FindNames(pAttribute.Get(), L".."), std::vector<std::wstring>{L"a"});
}

TEST_F(Lifetime, ADocumentIsFreeAgainOnceItsNodesAre) {
    const DocumentPtr pDocument = From(L"<a b=\"1\">text<c/></a>");
    const ULONG before = References(pDocument.Get());
    EXPECT_EQ(before, 1U);
    const std::function<void()> uses[] = {
        [&] { static_cast<void>(RootOf(pDocument)); },
        [&] { static_cast<void>(AttributesOf(RootOf(pDocument).Get())); },
        [&] { static_cast<void>(ChildrenOf(RootOf(pDocument).Get())); },
        [&] { static_cast<void>(Find(pDocument.Get(), L"//c")); },
        [&] { static_cast<void>(MakeNode(pDocument, NODE_ELEMENT, L"x")); },
        [&] { static_cast<void>(Saved(pDocument)); },
        [&] { static_cast<void>(ErrorCode(pDocument)); },
        [&] { RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"x").Get(), nullptr); },
        [&] { RootOf(pDocument)->removeChild(Find(pDocument.Get(), L"//c").Get(), nullptr); },
        [&] { RootOf(pDocument)->removeAttribute(Bstr(L"b").Get()); },
        [&] { static_cast<void>(LoadText(pDocument, L"<z/>")); },
        [&] { static_cast<void>(LoadText(pDocument, L"<z>")); },
    };
    for (const auto& use : uses) {
        use();
        EXPECT_EQ(References(pDocument.Get()), before);
    }
}

TEST_F(Lifetime, ANodeThatMovesIsHeldByItsNewDocument) {
    const DocumentPtr pFrom = From(L"<a><b><c d=\"1\"/></b></a>");
    const DocumentPtr pTo = From(L"<z/>");
    {
        const NodePtr pInner = Find(pFrom.Get(), L"//c");
        ASSERT_EQ(RootOf(pTo)->appendChild(ChildAt(RootOf(pFrom).Get(), 0).Get(), nullptr), S_OK);
        EXPECT_EQ(References(pFrom.Get()), 1U);
        EXPECT_EQ(References(pTo.Get()), 2U);
        for (const NodePtr& pNode :
             {pInner, AttributeOf(pInner.Get(), L"d"), ChildAt(AttributeOf(pInner.Get(), L"d").Get(), 0)}) {
            ComPtr<IXMLDOMDocument> pOwner;
            ASSERT_EQ(pNode->get_ownerDocument(pOwner.Put()), S_OK);
            EXPECT_EQ(pOwner.Get(), static_cast<IXMLDOMDocument*>(pTo.Get()));
        }
    }
    EXPECT_EQ(References(pTo.Get()), 1U);
}

TEST_F(Lifetime, ANodeMayOutliveTheDocumentItCameFrom) {
    DocumentPtr pFrom = From(L"<a><b/></a>");
    const DocumentPtr pTo = From(L"<z/>");
    const NodePtr pMoved = ChildAt(RootOf(pFrom).Get(), 0);
    ASSERT_EQ(RootOf(pTo)->appendChild(pMoved.Get(), nullptr), S_OK);
    const long before = LiveObjectCount();
    pFrom.Reset();
    EXPECT_EQ(LiveObjectCount(), before - 2);
    EXPECT_EQ(XmlOf(pTo.Get()), L"<z><b/></z>\r\n");
}

TEST_F(Lifetime, AnAttributeThatMovesIsHeldByItsNewDocument) {
    DocumentPtr pFrom = From(L"<a b=\"1\"/>");
    const DocumentPtr pTo = From(L"<z/>");
    NodePtr pAttribute;
    ASSERT_EQ(AttributesOf(RootOf(pFrom).Get())->removeNamedItem(Bstr(L"b").Get(), pAttribute.Put()), S_OK);
    EXPECT_EQ(References(pFrom.Get()), 2U);
    ASSERT_EQ(AttributesOf(RootOf(pTo).Get())->setNamedItem(pAttribute.Get(), nullptr), S_OK);
    EXPECT_EQ(References(pFrom.Get()), 1U);
    pFrom.Reset();
    EXPECT_EQ(XmlOf(RootOf(pTo).Get()), L"<z b=\"1\"/>");
}

TEST_F(Lifetime, ATreeOfTwoHolderSurvivesEitherRelease) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    NodePtr pTree = RootOf(pDocument).Get() ? NodePtr(RootOf(pDocument).Get()) : nullptr;
    ASSERT_EQ(pDocument->removeChild(pTree.Get(), nullptr), S_OK);
    NodePtr pOne = ChildAt(pTree.Get(), 0);
    NodePtr pOther = ChildAt(pTree.Get(), 1);
    pTree.Reset();
    pOne.Reset();
    NodePtr pSibling;
    ASSERT_EQ(pOther->get_previousSibling(pSibling.Put()), S_OK);
    EXPECT_EQ(NameOf(pSibling.Get()), L"b");
}

TEST_F(Lifetime, ADeepTreeIsDestroyedWithoutRecursion) {
    const DocumentPtr pDocument = From(L"<a/>");
    NodePtr pDeepest(RootOf(pDocument).Get());
    for (int i = 0; i < 200000; ++i) {
        const NodePtr pNext = MakeNode(pDocument, NODE_ELEMENT, L"b");
        ASSERT_EQ(pDeepest->appendChild(pNext.Get(), nullptr), S_OK);
        pDeepest = pNext;
    }
    ASSERT_EQ(LoadText(pDocument, L"<z/>"), S_OK);
    EXPECT_GT(LiveObjectCount(), 200000);
    pDeepest.Reset();
    EXPECT_EQ(LiveObjectCount(), 2);
}

TEST_F(Lifetime, FailingCallsLeaveNoReferences) {
    const DocumentPtr pDocument = From(L"<a b=\"1\"><c/></a>");
    const NodePtr pChild = ChildAt(RootOf(pDocument).Get(), 0);
    const NodePtr pAttribute = AttributeOf(RootOf(pDocument).Get(), L"b");
    const ULONG before = References(pChild.Get());
    EXPECT_EQ(pChild->appendChild(RootOf(pDocument).Get(), nullptr), E_FAIL);
    EXPECT_EQ(pChild->appendChild(pAttribute.Get(), nullptr), E_FAIL);
    EXPECT_EQ(AttributesOf(pChild.Get())->setNamedItem(pAttribute.Get(), nullptr), E_FAIL);
    NodePtr pNone;
    EXPECT_EQ(pChild->selectSingleNode(Bstr(L"q:x").Get(), pNone.Put()), E_FAIL);
    EXPECT_EQ(References(pChild.Get()), before);
    EXPECT_EQ(References(pAttribute.Get()), 1U);
}

}  // namespace
}  // namespace devkit::msxml::tests
