#include "devkit/msxml/tree/data.h"

#include <gtest/gtest.h>

#include "devkit/msxml/tree/attributes.h"

namespace devkit::msxml::tests {
namespace {

SharedName Named(std::wstring_view name) { return std::make_shared<const Name>(name, std::wstring_view()); }

// A tree that no COM object knows of.
class Tree : public testing::Test {
  protected:
    Tree() : m_pDocument(new Document), m_keep(m_pDocument) {}

    NodeRef Add(Node& parent, Kind kind, std::wstring_view name, std::wstring data = {}) {
        NodeRef pNode = MakeNode(kind, *m_pDocument, name.empty() ? nullptr : Named(name), std::move(data));
        parent.Attach(*pNode, nullptr);
        return pNode;
    }
    [[nodiscard]] Document& Home() const { return *m_pDocument; }

  private:
    Document* m_pDocument;
    NodeRef m_keep;
};

TEST_F(Tree, TheValueOfAnAttributeIsANodeOnceItIsAskedFor) {
    const NodeRef pElement = Add(Home(), Kind::Element, L"a");
    const NodeRef pAttribute = Add(*pElement, Kind::Attribute, L"b", L"1");
    const long before = Node::CountLiving();
    EXPECT_EQ(L"1", RawText(*pAttribute));
    EXPECT_EQ(nullptr, pAttribute->Children().pFirst);
    ExposeValue(*pAttribute);
    EXPECT_EQ(before + 1, Node::CountLiving());
    ASSERT_NE(nullptr, pAttribute->Children().pFirst);
    EXPECT_EQ(L"1", pAttribute->Children().pFirst->Data());
    EXPECT_EQ(L"1", RawText(*pAttribute));
    ExposeValue(*pAttribute);
    EXPECT_EQ(1U, pAttribute->Children().count);
    SetAttributeValue(*pAttribute, L"2");
    EXPECT_EQ(before, Node::CountLiving());
    EXPECT_EQ(L"2", RawText(*pAttribute));
}

TEST_F(Tree, TextThatStandsInOnePlaceIsNotCopied) {
    const NodeRef pElement = Add(Home(), Kind::Element, L"a");
    const NodeRef pAttribute = Add(*pElement, Kind::Attribute, L"b", L"1");
    std::wstring room = L"before";
    EXPECT_EQ(pAttribute->Data().data(), RawText(*pAttribute, room).data());
    EXPECT_EQ(L"1", RawText(*pAttribute, room));
    EXPECT_EQ(L"before", room);
    ExposeValue(*pAttribute);
    EXPECT_EQ(L"1", RawText(*pAttribute, room));
    EXPECT_EQ(L"1", room);
    Add(*pElement, Kind::Text, L"", L"2");
    Add(*pElement, Kind::CdataSection, L"", L"3");
    EXPECT_EQ(L"23", RawText(*pElement, room));
    EXPECT_EQ(room.data(), RawText(*pElement, room).data());
}

TEST_F(Tree, AnEmptyValueHasNoNode) {
    const NodeRef pElement = Add(Home(), Kind::Element, L"a");
    const NodeRef pAttribute = Add(*pElement, Kind::Attribute, L"b");
    ExposeValue(*pAttribute);
    EXPECT_EQ(0U, pAttribute->Children().count);
}

TEST_F(Tree, ANodeLivesAsLongAsItIsKeptOrItsTreeIs) {
    const long before = Node::CountLiving();
    NodeRef pElement = Add(Home(), Kind::Element, L"a");
    NodeRef pChild = Add(*pElement, Kind::Element, L"b");
    pElement->Detach();
    EXPECT_EQ(before + 2, Node::CountLiving());
    pElement = NodeRef();
    EXPECT_EQ(L"a", pChild->Parent()->GetName()->Qualified());
    pChild = NodeRef();
    EXPECT_EQ(before, Node::CountLiving());
}

TEST_F(Tree, ABlankStandsForEachWhiteSpaceThatWasDropped) {
    const NodeRef pRoot = Add(Home(), Kind::Element, L"a");
    const NodeRef pFirst = Add(*pRoot, Kind::Element, L"b");
    Add(*pFirst, Kind::Text, L"", L"1");
    pFirst->hasSpaceAtEnd = true;
    const NodeRef pSecond = Add(*pRoot, Kind::Element, L"c");
    pSecond->hasSpaceBefore = true;
    Add(*pSecond, Kind::Text, L"", L"2");
    pRoot->hasSpaceAtEnd = true;
    EXPECT_EQ(L"1  2", RawText(*pRoot));
    EXPECT_EQ(L"1", RawText(*pFirst));
    SetTextContent(*pFirst, L"3");
    EXPECT_EQ(L"3 2", RawText(*pRoot));
}

TEST_F(Tree, TextsAreJoinedAndEmptyOnesGo) {
    const NodeRef pRoot = Add(Home(), Kind::Element, L"a");
    for (const wchar_t* text : {L"1", L"", L"2"}) Add(*pRoot, Kind::Text, L"", text);
    const NodeRef pInner = Add(*pRoot, Kind::Element, L"b");
    Add(*pInner, Kind::Text, L"");
    JoinTexts(*pRoot);
    EXPECT_EQ(2U, pRoot->Children().count);
    EXPECT_EQ(L"12", pRoot->Children().pFirst->Data());
    EXPECT_EQ(0U, pInner->Children().count);
}

TEST(LineFeeds, StandForEachKindOfLineEnd) {
    EXPECT_EQ(L"1\n2\n3\n\n4\n", WithLineFeeds(L"1\r\n2\n3\r\r\n4\r"));
    EXPECT_EQ(L"", WithLineFeeds(L""));
}

}  // namespace
}  // namespace devkit::msxml::tests
