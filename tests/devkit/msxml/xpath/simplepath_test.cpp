#include "devkit/msxml/xpath/simplepath.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

const std::vector<SelectionNamespace> kNamespaces = {{L"p", L"urn:p"}, {L"q", L"urn:q"}};

bool IsSimple(std::wstring_view expression) { return SimplePath::Parse(expression, kNamespaces).has_value(); }

// The nodes themselves, in order.
std::vector<NodePtr> Selected(IXMLDOMNode* pNode, std::wstring_view query) {
    ListPtr pList;
    EXPECT_EQ(S_OK, pNode->selectNodes(Bstr(query).Get(), pList.Put()));
    std::vector<NodePtr> nodes;
    NodePtr pFound;
    while (pList && pList->nextNode(pFound.Put()) == S_OK) nodes.push_back(pFound);
    return nodes;
}

TEST(SimplePath, KnowsWhatItCanAnswer) {
    for (const wchar_t* expression :
         {L"a", L"p:a", L"a/p:b", L"/a/b", L"//a", L".//a", L"//a[@b = \"c\"]", L"//p:a[@b='c']/q:d | //e/f",
          L" a [ @b = 'c' ] / d ", L".//a|.//b", L"a-b.c_1"}) {
        EXPECT_TRUE(IsSimple(expression)) << expression;
    }
}

TEST(SimplePath, LeavesTheRestToTheLibrary) {
    for (const wchar_t* expression : {L"",         L".",           L"..",
                                      L"/",        L"*",           L"@a",
                                      L"a/@b",     L"a//b",        L"//a//b",
                                      L"a[1]",     L"a[b]",        L"a[@b]",
                                      L"a[@b=1]",  L"a[@p:b='1']", L"text()",
                                      L"child::a", L"x:a",         L"p:*",
                                      L"a|b",      L"//a | b",     L"a/",
                                      L"a b",      L"a[@b='c'",    L"a[@b='c']]",
                                      L"count(a)", L"a and b",     L"\x00e4",
                                      L"a\x00e4",  L"1",           L"p:",
                                      L":a",       L"p::a",        L"a[@b='c'][@d='e']",
                                      L"'a'",      L"//",          L"div div div",
                                      L"//a |"}) {
        EXPECT_FALSE(IsSimple(expression)) << expression;
    }
}

using SimpleSelection = KitDom;

// Parentheses are enough to have the library asked.
TEST_F(SimpleSelection, FindsWhatTheLibraryFinds) {
    const DocumentPtr pDocument = From(
        L"<p:a xmlns:p=\"urn:p\" xmlns:q=\"urn:q\" xmlns=\"urn:p\" n=\"1\"><b n=\"1\"><b "
        L"n=\"2\"><q:c/><a/></b>text</b>"
        L"<a><b n=\"1\"/><x xmlns=\"\" n=\"&lt;\"><x n=\"2\"/><y/></x></a><!--c--><q:c n='1' p:n='2'><a "
        L"n='2'/></q:c></p:a>");
    BindPrefixes(pDocument, L"xmlns:p='urn:p' xmlns:q='urn:q'");
    const std::vector<NodePtr> contexts = Selected(pDocument.Get(), L"/ | //node() | //@*");
    ASSERT_GT(contexts.size(), 20U);
    std::size_t found = 0;
    for (const wchar_t* expression : {L"p:a",
                                      L"p:b",
                                      L"p:a/p:b",
                                      L"p:b/p:b/q:c",
                                      L"/p:a",
                                      L"/p:a/p:b",
                                      L"/p:b",
                                      L"//p:b",
                                      L".//p:b",
                                      L"//x",
                                      L"//p:b/p:b",
                                      L".//p:a/p:b",
                                      L"//p:a/x/y",
                                      L"//x/x",
                                      L"//p:b[@n='1']",
                                      L"p:a[@n='1']/p:b[@n=\"1\"]",
                                      L"//x[@n='<']/x[@n='2']",
                                      L"//*[@n]/p:a",
                                      L"//p:b | //q:c",
                                      L".//x | .//p:a",
                                      L"//p:b/p:b | //q:c/p:a",
                                      L".//x/y | .//p:b/q:c | .//p:a",
                                      L"//p:none/x | //x/none | //x/y | //p:b/q:c",
                                      L"//q:c[@n='2']",
                                      L"//none"}) {
        for (const NodePtr& pContext : contexts) {
            const std::vector<NodePtr> nodes = Selected(pContext.Get(), expression);
            const std::vector<NodePtr> expected =
                Selected(pContext.Get(), L"(" + std::wstring(expression) + L")");
            ASSERT_EQ(expected.size(), nodes.size()) << expression;
            for (std::size_t i = 0; i < nodes.size(); ++i) EXPECT_EQ(expected[i].Get(), nodes[i].Get());
            NodePtr pFirst;
            EXPECT_EQ(nodes.empty() ? S_FALSE : S_OK,
                      pContext->selectSingleNode(Bstr(expression).Get(), pFirst.Put()));
            EXPECT_EQ(nodes.empty() ? nullptr : nodes.front().Get(), pFirst.Get());
            found += nodes.size();
        }
    }
    EXPECT_GT(found, 200U);
}

TEST_F(SimpleSelection, WorksInATreeWithoutADocument) {
    const DocumentPtr pDocument = From(L"<a><b><c/></b></a>");
    NodePtr pTree;
    ASSERT_EQ(S_OK, RootOf(pDocument)->cloneNode(VARIANT_TRUE, pTree.Put()));
    ASSERT_EQ(S_OK, pTree->put_text(Bstr(L"").Get()));
    ASSERT_EQ(S_OK, pTree->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"only").Get(), nullptr));
    EXPECT_EQ(std::vector<std::wstring>{L"only"}, FindNames(pTree.Get(), L"only"));
    EXPECT_EQ(std::vector<std::wstring>{L"only"}, FindNames(pTree.Get(), L".//only"));
    EXPECT_EQ(std::vector<std::wstring>{L"only"}, FindNames(pTree.Get(), L"//only"));
    EXPECT_EQ(std::vector<std::wstring>{L"a"}, FindNames(pTree.Get(), L"/a"));
    EXPECT_EQ(std::vector<std::wstring>(), FindNames(pTree.Get(), L"//c"));
}

TEST_F(SimpleSelection, SeesEachChangeAtOnce) {
    const DocumentPtr pDocument = From(L"<a><b n=\"1\"/></a>");
    EXPECT_EQ(1U, FindNames(pDocument.Get(), L"//b[@n='1']").size());
    ASSERT_EQ(S_OK, AttributeOf(Find(pDocument.Get(), L"//b").Get(), L"n")->put_text(Bstr(L"2").Get()));
    EXPECT_EQ(0U, FindNames(pDocument.Get(), L"//b[@n='1']").size());
    EXPECT_EQ(1U, FindNames(pDocument.Get(), L"//b[@n='2']").size());
}

}  // namespace
}  // namespace devkit::msxml::tests
