#include "devkit/msxml/nodeediting.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

class Editing : public Conformance {};
RUN_FOR_BOTH_MAKERS(Editing);

TEST_P(Editing, AppendChildAddsLastAndGivesTheNode) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const NodePtr pNew = MakeNode(pDocument, NODE_ELEMENT, L"c");
    NodePtr pOut;
    ASSERT_EQ(RootOf(pDocument)->appendChild(pNew.Get(), pOut.Put()), S_OK);
    EXPECT_EQ(NameOf(pOut.Get()), L"c");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/><c/></a>");
}

TEST_P(Editing, AppendChildMovesANodeOfTheTree) {
    const DocumentPtr pDocument = From(L"<a><b/><c><d/></c></a>");
    const NodePtr pMoved = Find(pDocument.Get(), L"//d");
    ASSERT_EQ(RootOf(pDocument)->appendChild(pMoved.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/><c/><d/></a>");
}

TEST_P(Editing, AppendChildRefusesNull) {
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(RootOf(pDocument)->appendChild(nullptr, nullptr), E_INVALIDARG);
}

TEST_P(Editing, InsertBeforeAChild) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    const NodePtr pBefore = ChildAt(RootOf(pDocument).Get(), 1);
    const NodePtr pNew = MakeNode(pDocument, NODE_ELEMENT, L"x");
    NodePtr pOut;
    ASSERT_EQ(RootOf(pDocument)->insertBefore(pNew.Get(), Variant(pBefore.Get()).Get(), pOut.Put()), S_OK);
    EXPECT_EQ(NameOf(pOut.Get()), L"x");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/><x/><c/></a>");
}

TEST_P(Editing, InsertBeforeNothingAppends) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    VARIANT nothing;
    VariantInit(&nothing);
    nothing.vt = VT_NULL;
    ASSERT_EQ(
        RootOf(pDocument)->insertBefore(MakeNode(pDocument, NODE_ELEMENT, L"x").Get(), nothing, nullptr),
        S_OK);
    nothing.vt = VT_EMPTY;
    ASSERT_EQ(
        RootOf(pDocument)->insertBefore(MakeNode(pDocument, NODE_ELEMENT, L"y").Get(), nothing, nullptr),
        S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/><x/><y/></a>");
}

TEST_P(Editing, InsertBeforeANodeOfAnotherParentFails) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: inserts at the reference, wherever it is";
    const DocumentPtr pDocument = From(L"<a><b><c/></b></a>");
    const NodePtr pInner = Find(pDocument.Get(), L"//c");
    const NodePtr pNew = MakeNode(pDocument, NODE_ELEMENT, L"x");
    NodePtr pOut;
    EXPECT_TRUE(FAILED(RootOf(pDocument)->insertBefore(pNew.Get(), Variant(pInner.Get()).Get(), pOut.Put())));
    EXPECT_FALSE(pOut);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b><c/></b></a>");
}

TEST_P(Editing, RemoveChildGivesTheNodeWhichStaysUsable) {
    const DocumentPtr pDocument = From(L"<a><b c=\"1\"><d/></b></a>");
    const NodePtr pChild = ChildAt(RootOf(pDocument).Get(), 0);
    NodePtr pOut;
    ASSERT_EQ(RootOf(pDocument)->removeChild(pChild.Get(), pOut.Put()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a/>");
    EXPECT_EQ(XmlOf(pOut.Get()), L"<b c=\"1\"><d/></b>");
    NodePtr pParent;
    EXPECT_EQ(pOut->get_parentNode(pParent.Put()), S_FALSE);
    ComPtr<IXMLDOMDocument> pOwner;
    EXPECT_EQ(pOut->get_ownerDocument(pOwner.Put()), S_OK);
}

TEST_P(Editing, RemoveChildRefusesWhatIsNoChild) {
    const DocumentPtr pDocument = From(L"<a><b><c/></b></a>");
    const NodePtr pInner = Find(pDocument.Get(), L"//c");
    EXPECT_EQ(RootOf(pDocument)->removeChild(pInner.Get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(RootOf(pDocument)->removeChild(nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b><c/></b></a>");
}

TEST_P(Editing, ReplaceChildGivesTheOldNode) {
    const DocumentPtr pDocument = From(L"<a><b/><c/><d/></a>");
    const NodePtr pOld = ChildAt(RootOf(pDocument).Get(), 1);
    const NodePtr pNew = MakeNode(pDocument, NODE_ELEMENT, L"x");
    NodePtr pOut;
    ASSERT_EQ(RootOf(pDocument)->replaceChild(pNew.Get(), pOld.Get(), pOut.Put()), S_OK);
    EXPECT_EQ(NameOf(pOut.Get()), L"c");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/><x/><d/></a>");
}

TEST_P(Editing, ReplaceChildRefusesWhatIsNoChild) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const NodePtr pNew = MakeNode(pDocument, NODE_ELEMENT, L"x");
    const NodePtr pOther = MakeNode(pDocument, NODE_ELEMENT, L"y");
    EXPECT_EQ(RootOf(pDocument)->replaceChild(pNew.Get(), pOther.Get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(RootOf(pDocument)->replaceChild(pNew.Get(), nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/></a>");
}

TEST_P(Editing, AFragmentGivesItsChildrenInOrder) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: the fragment keeps its children";
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    const NodePtr pFragment = MakeNode(pDocument, NODE_DOCUMENT_FRAGMENT, L"");
    ASSERT_EQ(pFragment->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"x").Get(), nullptr), S_OK);
    ASSERT_EQ(pFragment->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"y").Get(), nullptr), S_OK);
    const NodePtr pBefore = ChildAt(RootOf(pDocument).Get(), 0);
    ASSERT_EQ(RootOf(pDocument)->insertBefore(pFragment.Get(), Variant(pBefore.Get()).Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><x/><y/><b/></a>");
    VARIANT_BOOL has = VARIANT_TRUE;
    EXPECT_EQ(pFragment->hasChildNodes(&has), S_FALSE);
    EXPECT_EQ(has, VARIANT_FALSE);
}

TEST_P(Editing, ANodeMovesBetweenDocuments) {
    const DocumentPtr pFrom = From(L"<a><b c=\"1\">text</b></a>");
    const DocumentPtr pTo = From(L"<z/>");
    const NodePtr pMoved = ChildAt(RootOf(pFrom).Get(), 0);
    ASSERT_EQ(RootOf(pTo)->appendChild(pMoved.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pTo).Get()), L"<z><b c=\"1\">text</b></z>");
    EXPECT_EQ(XmlOf(RootOf(pFrom).Get()), L"<a/>");
}

TEST_P(Editing, ADocumentTakesOneElementOnly) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: takes a second root element";
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(pDocument->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"b").Get(), nullptr), E_FAIL);
    EXPECT_EQ(pDocument->appendChild(MakeNode(pDocument, NODE_COMMENT, L"").Get(), nullptr), S_OK);
}

TEST_P(Editing, ANodeDoesNotGoBelowItself) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: closes the circle and never comes back";
    const DocumentPtr pDocument = From(L"<a><b><c/></b></a>");
    const NodePtr pOuter = Find(pDocument.Get(), L"//b");
    const NodePtr pInner = Find(pDocument.Get(), L"//c");
    EXPECT_EQ(pInner->appendChild(pOuter.Get(), nullptr), E_FAIL);
    EXPECT_EQ(pOuter->appendChild(pOuter.Get(), nullptr), E_FAIL);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b><c/></b></a>");
}

TEST_P(Editing, AnAttributeIsNoChild) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: takes attributes as children";
    const DocumentPtr pDocument = From(L"<a/>");
    const NodePtr pAttribute = MakeNode(pDocument, NODE_ATTRIBUTE, L"b");
    EXPECT_EQ(RootOf(pDocument)->appendChild(pAttribute.Get(), nullptr), E_FAIL);
}

TEST_P(Editing, LeavesTakeNoChildren) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: text nodes take children";
    const DocumentPtr pDocument = From(L"<a>text</a>");
    const NodePtr pText = ChildAt(RootOf(pDocument).Get(), 0);
    EXPECT_EQ(pText->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"b").Get(), nullptr), E_FAIL);
}

using KitEditing = KitDom;

TEST_F(KitEditing, ReplacingByNullRemoves) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    NodePtr pOut;
    ASSERT_EQ(RootOf(pDocument)->replaceChild(nullptr, ChildAt(RootOf(pDocument).Get(), 0).Get(), pOut.Put()),
              S_OK);
    EXPECT_EQ(NameOf(pOut.Get()), L"b");
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><c/></a>");
}

TEST_F(KitEditing, ANodePutBeforeOrInPlaceOfItselfStays) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    const NodePtr pChild = ChildAt(RootOf(pDocument).Get(), 0);
    EXPECT_EQ(RootOf(pDocument)->insertBefore(pChild.Get(), Variant(pChild.Get()).Get(), nullptr), S_OK);
    EXPECT_EQ(RootOf(pDocument)->replaceChild(pChild.Get(), pChild.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/><c/></a>");
}

TEST_F(KitEditing, ANeighbourReplacesItsNeighbour) {
    const DocumentPtr pDocument = From(L"<a><b/><c/><d/></a>");
    const ElementPtr pRoot = RootOf(pDocument);
    ASSERT_EQ(pRoot->replaceChild(ChildAt(pRoot.Get(), 0).Get(), ChildAt(pRoot.Get(), 1).Get(), nullptr),
              S_OK);
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<a><b/><d/></a>");
    ASSERT_EQ(pRoot->replaceChild(ChildAt(pRoot.Get(), 1).Get(), ChildAt(pRoot.Get(), 0).Get(), nullptr),
              S_OK);
    EXPECT_EQ(XmlOf(pRoot.Get()), L"<a><d/></a>");
}

TEST_F(KitEditing, TheRootElementCanBeReplaced) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\"?><a/><!--end-->");
    const NodePtr pNew = MakeNode(pDocument, NODE_ELEMENT, L"b");
    ASSERT_EQ(pDocument->replaceChild(pNew.Get(), RootOf(pDocument).Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(pDocument.Get()), L"<?xml version=\"1.0\"?>\r\n<b/>\r\n<!--end-->\r\n");
    ElementPtr pElement;
    ASSERT_EQ(MakeNode(pDocument, NODE_ELEMENT, L"c").QueryTo(pElement), S_OK);
    ASSERT_EQ(pDocument->putref_documentElement(pElement.Get()), S_OK);
    EXPECT_EQ(XmlOf(pDocument.Get()), L"<?xml version=\"1.0\"?>\r\n<c/>\r\n<!--end-->\r\n");
}

TEST_F(KitEditing, TheRootElementMovesWithinItsDocument) {
    const DocumentPtr pDocument = From(L"<a/><!--end-->");
    ASSERT_EQ(pDocument->appendChild(RootOf(pDocument).Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(pDocument.Get()), L"<!--end-->\r\n<a/>\r\n");
}

TEST_F(KitEditing, TheDeclarationStandsFirst) {
    const DocumentPtr pDocument = From(L"<a/>");
    const NodePtr pDeclaration = MakeNode(pDocument, NODE_PROCESSING_INSTRUCTION, L"xml");
    EXPECT_EQ(pDocument->appendChild(pDeclaration.Get(), nullptr), E_FAIL);
    const Variant before(RootOf(pDocument).Get());
    ASSERT_EQ(pDocument->insertBefore(pDeclaration.Get(), before.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(pDocument.Get()), L"<?xml version=\"1.0\"?>\r\n<a/>\r\n");
    const NodePtr pSecond = MakeNode(pDocument, NODE_PROCESSING_INSTRUCTION, L"xml");
    const Variant first(pDeclaration.Get());
    EXPECT_EQ(pDocument->insertBefore(pSecond.Get(), first.Get(), nullptr), E_FAIL);
    const NodePtr pComment = MakeNode(pDocument, NODE_COMMENT, L"");
    EXPECT_EQ(pDocument->insertBefore(pComment.Get(), first.Get(), nullptr), E_FAIL);
    EXPECT_EQ(RootOf(pDocument)->appendChild(pSecond.Get(), nullptr), E_FAIL);
    EXPECT_EQ(pDocument->replaceChild(pSecond.Get(), pDeclaration.Get(), nullptr), S_OK);
}

TEST_F(KitEditing, ADocumentTakesNoText) {
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(pDocument->appendChild(MakeNode(pDocument, NODE_TEXT, L"").Get(), nullptr), E_FAIL);
}

TEST_F(KitEditing, AFragmentWithTwoElementsDoesNotGoIntoADocument) {
    const DocumentPtr pDocument = New();
    const NodePtr pFragment = MakeNode(pDocument, NODE_DOCUMENT_FRAGMENT, L"");
    ASSERT_EQ(pFragment->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"x").Get(), nullptr), S_OK);
    ASSERT_EQ(pFragment->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"y").Get(), nullptr), S_OK);
    EXPECT_EQ(pDocument->appendChild(pFragment.Get(), nullptr), E_FAIL);
    EXPECT_EQ(XmlOf(pFragment.Get()), L"<x/><y/>");
}

TEST_F(KitEditing, RefusesADocumentAndANodeOfAnotherLibrary) {
    const DocumentPtr pDocument = From(L"<a/>");
    EXPECT_EQ(RootOf(pDocument)->appendChild(New().Get(), nullptr), E_FAIL);
    const DocumentPtr pForeign = Parsed(Maker::System, L"<b/>");
    EXPECT_EQ(RootOf(pDocument)->appendChild(RootOf(pForeign).Get(), nullptr), E_INVALIDARG);
}

TEST_F(KitEditing, AReferenceOfAnotherTypeFails) {
    const DocumentPtr pDocument = From(L"<a/>");
    const NodePtr pNew = MakeNode(pDocument, NODE_ELEMENT, L"b");
    EXPECT_EQ(RootOf(pDocument)->insertBefore(pNew.Get(), Variant(LONG{1}).Get(), nullptr), E_FAIL);
    VARIANT null;
    VariantInit(&null);
    null.vt = VT_UNKNOWN;
    null.punkVal = nullptr;
    EXPECT_EQ(RootOf(pDocument)->insertBefore(pNew.Get(), null, nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><b/></a>");
}

TEST_F(KitEditing, ATextOfAnAttributeCanBeReplaced) {
    const DocumentPtr pDocument = From(L"<a b=\"c\"/>");
    const NodePtr pAttribute = AttributeOf(RootOf(pDocument).Get(), L"b");
    const NodePtr pText = MakeNode(pDocument, NODE_TEXT, L"");
    ASSERT_EQ(pText->put_nodeValue(Variant(std::wstring_view(L"d")).Get()), S_OK);
    ASSERT_EQ(pAttribute->appendChild(pText.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a b=\"cd\"/>");
}

}  // namespace
}  // namespace devkit::msxml::tests
