#include <functional>

#include "devkit/msxml/com/domdocument.h"
#include "devkit/msxml/com/facade.h"
#include "devkit/msxml/domundertest.h"

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
        EXPECT_EQ(pOwner ? S_OK : S_FALSE, result);
        NodePtr pTop = pNode;
        for (NodePtr pParent; pTop->get_parentNode(pParent.Put()) == S_OK;) pTop = pParent;
        const IXMLDOMNode* const pDocument = pOwner ? static_cast<IXMLDOMNode*>(pOwner.Get()) : pNode.Get();
        EXPECT_TRUE(pTop.Get() == pDocument || std::wstring_view(query) == L"/a/@b");
    }
}

TEST_F(Lifetime, ADetachedNodeKeepsItsDocument) {
    NodePtr pNode = MakeNode(From(L"<a/>"), NODE_ELEMENT, L"b");
    ComPtr<IXMLDOMDocument> pOwner;
    ASSERT_EQ(S_OK, pNode->get_ownerDocument(pOwner.Put()));
    EXPECT_EQ(L"<a/>\r\n", XmlOf(pOwner.Get()));
    pOwner.Reset();
    pNode.Reset();
    EXPECT_EQ(0, LiveObjectCount());
}

TEST_F(Lifetime, ADetachedTreeLivesAsLongAsOneOfItsNodesIsHeld) {
    const DocumentPtr pDocument = From(L"<a><b><c d=\"1\"><e/></c></b></a>");
    NodePtr pInner = Find(pDocument.Get(), L"//e");
    const long before = LiveObjectCount();
    ASSERT_EQ(S_OK, RootOf(pDocument)->removeChild(ChildAt(RootOf(pDocument).Get(), 0).Get(), nullptr));
    EXPECT_EQ(before, LiveObjectCount());
    NodePtr pParent;
    ASSERT_EQ(S_OK, pInner->get_parentNode(pParent.Put()));
    EXPECT_EQ(L"<c d=\"1\"><e/></c>", XmlOf(pParent.Get()));
    pInner.Reset();
    pParent.Reset();
    EXPECT_EQ(before - 4, LiveObjectCount());
}

TEST_F(Lifetime, ANodeThatNobodyHoldsGoesWithItsRemoval) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    const long before = LiveObjectCount();
    ASSERT_EQ(S_OK, RootOf(pDocument)->removeChild(ChildAt(RootOf(pDocument).Get(), 0).Get(), nullptr));
    EXPECT_EQ(before - 1, LiveObjectCount());
}

TEST_F(Lifetime, AnAttributesTextKeepsTheElement) {
    NodePtr pText;
    {
        const DocumentPtr pDocument = From(L"<a b=\"1\"/>");
        pText = ChildAt(AttributeOf(RootOf(pDocument).Get(), L"b").Get(), 0);
    }
    NodePtr pAttribute;
    ASSERT_EQ(S_OK, pText->get_parentNode(pAttribute.Put()));
    EXPECT_EQ(std::vector<std::wstring>{L"a"}, FindNames(pAttribute.Get(), L".."));
}

TEST_F(Lifetime, ADocumentIsFreeAgainOnceItsNodesAre) {
    const DocumentPtr pDocument = From(L"<a b=\"1\">text<c/></a>");
    const ULONG before = References(pDocument.Get());
    EXPECT_EQ(1U, before);
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
        EXPECT_EQ(before, References(pDocument.Get()));
    }
}

TEST_F(Lifetime, ANodeThatMovesIsHeldByItsNewDocument) {
    const DocumentPtr pFrom = From(L"<a><b><c d=\"1\"/></b></a>");
    const DocumentPtr pTo = From(L"<z/>");
    {
        const NodePtr pInner = Find(pFrom.Get(), L"//c");
        ASSERT_EQ(S_OK, RootOf(pTo)->appendChild(ChildAt(RootOf(pFrom).Get(), 0).Get(), nullptr));
        EXPECT_EQ(1U, References(pFrom.Get()));
        EXPECT_EQ(2U, References(pTo.Get()));
        for (const NodePtr& pNode :
             {pInner, AttributeOf(pInner.Get(), L"d"), ChildAt(AttributeOf(pInner.Get(), L"d").Get(), 0)}) {
            ComPtr<IXMLDOMDocument> pOwner;
            ASSERT_EQ(S_OK, pNode->get_ownerDocument(pOwner.Put()));
            EXPECT_EQ(pOwner.Get(), static_cast<IXMLDOMDocument*>(pTo.Get()));
        }
    }
    EXPECT_EQ(1U, References(pTo.Get()));
}

TEST_F(Lifetime, ANodeMayOutliveTheDocumentItCameFrom) {
    DocumentPtr pFrom = From(L"<a><b/></a>");
    const DocumentPtr pTo = From(L"<z/>");
    const NodePtr pMoved = ChildAt(RootOf(pFrom).Get(), 0);
    ASSERT_EQ(S_OK, RootOf(pTo)->appendChild(pMoved.Get(), nullptr));
    const long before = LiveObjectCount();
    pFrom.Reset();
    EXPECT_EQ(before - 2, LiveObjectCount());
    EXPECT_EQ(L"<z><b/></z>\r\n", XmlOf(pTo.Get()));
}

TEST_F(Lifetime, AnAttributeThatMovesIsHeldByItsNewDocument) {
    DocumentPtr pFrom = From(L"<a b=\"1\"/>");
    const DocumentPtr pTo = From(L"<z/>");
    NodePtr pAttribute;
    ASSERT_EQ(S_OK, AttributesOf(RootOf(pFrom).Get())->removeNamedItem(Bstr(L"b").Get(), pAttribute.Put()));
    EXPECT_EQ(2U, References(pFrom.Get()));
    ASSERT_EQ(S_OK, AttributesOf(RootOf(pTo).Get())->setNamedItem(pAttribute.Get(), nullptr));
    EXPECT_EQ(1U, References(pFrom.Get()));
    pFrom.Reset();
    EXPECT_EQ(L"<z b=\"1\"/>", XmlOf(RootOf(pTo).Get()));
}

TEST_F(Lifetime, ATreeOfTwoHolderSurvivesEitherRelease) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    NodePtr pTree = RootOf(pDocument).Get() ? NodePtr(RootOf(pDocument).Get()) : nullptr;
    ASSERT_EQ(S_OK, pDocument->removeChild(pTree.Get(), nullptr));
    NodePtr pOne = ChildAt(pTree.Get(), 0);
    NodePtr pOther = ChildAt(pTree.Get(), 1);
    pTree.Reset();
    pOne.Reset();
    NodePtr pSibling;
    ASSERT_EQ(S_OK, pOther->get_previousSibling(pSibling.Put()));
    EXPECT_EQ(L"b", NameOf(pSibling.Get()));
}

TEST_F(Lifetime, ADeepTreeIsDestroyedWithoutRecursion) {
    const DocumentPtr pDocument = From(L"<a/>");
    NodePtr pDeepest(RootOf(pDocument).Get());
    for (int i = 0; i < 200000; ++i) {
        const NodePtr pNext = MakeNode(pDocument, NODE_ELEMENT, L"b");
        ASSERT_EQ(S_OK, pDeepest->appendChild(pNext.Get(), nullptr));
        pDeepest = pNext;
    }
    ASSERT_EQ(S_OK, LoadText(pDocument, L"<z/>"));
    EXPECT_GT(LiveObjectCount(), 200000);
    pDeepest.Reset();
    EXPECT_EQ(2, LiveObjectCount());
}

TEST_F(Lifetime, FailingCallsLeaveNoReferences) {
    const DocumentPtr pDocument = From(L"<a b=\"1\"><c/></a>");
    const NodePtr pChild = ChildAt(RootOf(pDocument).Get(), 0);
    const NodePtr pAttribute = AttributeOf(RootOf(pDocument).Get(), L"b");
    const ULONG before = References(pChild.Get());
    EXPECT_EQ(E_FAIL, pChild->appendChild(RootOf(pDocument).Get(), nullptr));
    EXPECT_EQ(E_FAIL, pChild->appendChild(pAttribute.Get(), nullptr));
    EXPECT_EQ(E_FAIL, AttributesOf(pChild.Get())->setNamedItem(pAttribute.Get(), nullptr));
    NodePtr pNone;
    EXPECT_EQ(E_FAIL, pChild->selectSingleNode(Bstr(L"q:x").Get(), pNone.Put()));
    EXPECT_EQ(before, References(pChild.Get()));
    EXPECT_EQ(1U, References(pAttribute.Get()));
}

}  // namespace
}  // namespace devkit::msxml::tests
