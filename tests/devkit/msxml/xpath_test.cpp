#include "devkit/msxml/xpath.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

using Names = std::vector<std::wstring>;

// The out-parameter of a failing selection is null even where the caller left something else in it.
struct Selection {
    HRESULT result;
    bool isNull;
};

Selection SelectOne(IXMLDOMNode* pNode, std::wstring_view query) {
    IXMLDOMNode* pFound = reinterpret_cast<IXMLDOMNode*>(&pFound);
    const HRESULT result = pNode->selectSingleNode(Bstr(query).Get(), &pFound);
    const bool isNull = pFound == nullptr;
    if (SUCCEEDED(result)) static_cast<void>(ComPtr<IXMLDOMNode>::Adopt(pFound));
    return {result, isNull};
}

Selection SelectMany(IXMLDOMNode* pNode, std::wstring_view query) {
    IXMLDOMNodeList* pFound = reinterpret_cast<IXMLDOMNodeList*>(&pFound);
    const HRESULT result = pNode->selectNodes(Bstr(query).Get(), &pFound);
    const bool isNull = pFound == nullptr;
    if (SUCCEEDED(result)) static_cast<void>(ComPtr<IXMLDOMNodeList>::Adopt(pFound));
    return {result, isNull};
}

constexpr const wchar_t* ticket =
    L"<psf:PrintTicket xmlns:psf=\"urn:f\" xmlns:psk=\"urn:k\">"
    L"<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:ISOA4\"/></psf:Feature>"
    L"<psf:Feature name=\"psk:JobInputBin\">"
    L"<psf:ScoredProperty name=\"psk:OptionName\"><psf:Value>psk:Manual</psf:Value></psf:ScoredProperty>"
    L"<psf:Option name=\"psk:Auto\"/></psf:Feature>"
    L"</psf:PrintTicket>";

class XPathSelection : public Conformance {
  protected:
    [[nodiscard]] DocumentPtr Ticket() const {
        DocumentPtr pDocument = From(ticket);
        BindPrefixes(pDocument, L"xmlns:psf='urn:f'");
        return pDocument;
    }
};
RUN_FOR_BOTH_MAKERS(XPathSelection);

TEST_P(XPathSelection, FindsByPrefixOfTheSelectionNamespaces) {
    const DocumentPtr pDocument = From(ticket);
    BindPrefixes(pDocument, L"xmlns:other='urn:f'");
    EXPECT_EQ(NameOf(Find(pDocument.Get(), L"//other:PrintTicket").Get()), L"psf:PrintTicket");
}

TEST_P(XPathSelection, FindsByAttributeValueInDoubleQuotes) {
    const NodePtr pFound = Find(Ticket().Get(), L"//psf:Feature[@name = \"psk:PageMediaSize\"]");
    EXPECT_EQ(NameOf(ChildAt(pFound.Get(), 0).Get()), L"psf:Option");
}

TEST_P(XPathSelection, UnionGivesTheFirstInDocumentOrder) {
    const DocumentPtr pDocument = Ticket();
    const NodePtr pFound = Find(pDocument.Get(),
                                L"//psf:Feature[@name = \"psk:JobInputBin\"]/psf:Option | "
                                L"//psf:Feature[@name = \"psk:JobInputBin\"]"
                                L"/psf:ScoredProperty[@name = \"psk:OptionName\"]/psf:Value");
    EXPECT_EQ(NameOf(pFound.Get()), L"psf:Value");
}

TEST_P(XPathSelection, ListsAllInDocumentOrder) {
    EXPECT_EQ(FindNames(Ticket().Get(), L"//psf:Option | //psf:Feature | //psf:Value"),
              (Names{L"psf:Feature", L"psf:Option", L"psf:Feature", L"psf:Value", L"psf:Option"}));
}

TEST_P(XPathSelection, SelectsRelativeToTheNode) {
    const DocumentPtr pDocument = Ticket();
    const NodePtr pFeature = Find(pDocument.Get(), L"//psf:Feature[2]");
    EXPECT_EQ(FindNames(pFeature.Get(), L"psf:Option"), Names{L"psf:Option"});
    EXPECT_EQ(FindNames(pFeature.Get(), L".."), Names{L"psf:PrintTicket"});
    EXPECT_EQ(FindNames(pFeature.Get(), L"@name"), Names{L"name"});
    EXPECT_EQ(FindNames(pFeature.Get(), L"/*"), Names{L"psf:PrintTicket"});
}

TEST_P(XPathSelection, NoMatchIsSFalseAndNull) {
    const Selection selection = SelectOne(Ticket().Get(), L"//psf:Nothing");
    EXPECT_EQ(selection.result, S_FALSE);
    EXPECT_TRUE(selection.isNull);
}

TEST_P(XPathSelection, NoMatchIsAnEmptyList) {
    EXPECT_EQ(FindNames(Ticket().Get(), L"//psf:Nothing"), Names());
}

TEST_P(XPathSelection, AnUndeclaredPrefixFails) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: leaves the out-parameter as it was";
    for (const wchar_t* query : {L"//q:Feature", L"//psf:Feature/q:Option", L"//psf:None[q:x]"}) {
        const Selection one = SelectOne(Ticket().Get(), query);
        EXPECT_EQ(one.result, E_FAIL) << query;
        EXPECT_TRUE(one.isNull);
        const Selection many = SelectMany(Ticket().Get(), query);
        EXPECT_EQ(many.result, E_FAIL) << query;
        EXPECT_TRUE(many.isNull);
    }
}

TEST_P(XPathSelection, ABadExpressionFails) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: leaves the out-parameter as it was";
    for (const wchar_t* query :
         {L"", L"//", L"psf:Feature[", L"@@", L"psf:Feature]", L"'open", L"nosuch()"}) {
        const Selection one = SelectOne(Ticket().Get(), query);
        EXPECT_EQ(one.result, E_FAIL) << query;
        EXPECT_TRUE(one.isNull);
        const Selection many = SelectMany(Ticket().Get(), query);
        EXPECT_EQ(many.result, E_FAIL) << query;
        EXPECT_TRUE(many.isNull);
    }
}

TEST_P(XPathSelection, AnExpressionThatGivesNoNodesFails) {
    for (const wchar_t* query : {L"1 + 1", L"'text'", L"count(//*)", L"true()"}) {
        NodePtr pFound;
        EXPECT_EQ(Ticket()->selectSingleNode(Bstr(query).Get(), pFound.Put()), E_FAIL) << query;
    }
}

TEST_P(XPathSelection, RefusesNullArguments) {
    const DocumentPtr pDocument = Ticket();
    NodePtr pNode;
    EXPECT_EQ(pDocument->selectSingleNode(nullptr, pNode.Put()), E_INVALIDARG);
    EXPECT_EQ(pDocument->selectSingleNode(Bstr(L"/*").Get(), nullptr), E_INVALIDARG);
    ListPtr pList;
    EXPECT_EQ(pDocument->selectNodes(nullptr, pList.Put()), E_INVALIDARG);
    EXPECT_EQ(pDocument->selectNodes(Bstr(L"/*").Get(), nullptr), E_INVALIDARG);
}

TEST_P(XPathSelection, ANameWithoutPrefixIsInNoNamespace) {
    const DocumentPtr pDocument = From(L"<a xmlns=\"urn:d\"><b xmlns=\"\"/></a>");
    EXPECT_EQ(FindNames(pDocument.Get(), L"//a"), Names());
    EXPECT_EQ(FindNames(pDocument.Get(), L"//b"), Names{L"b"});
    BindPrefixes(pDocument, L"xmlns='urn:d'");
    EXPECT_EQ(FindNames(pDocument.Get(), L"//a"), Names());
    BindPrefixes(pDocument, L"xmlns='urn:d' xmlns:d=\"urn:d\"");
    EXPECT_EQ(FindNames(pDocument.Get(), L"//d:a"), Names{L"a"});
}

TEST_P(XPathSelection, DeclarationsAreNoAttributes) {
    const DocumentPtr pDocument = From(L"<a xmlns:p=\"urn:p\" xmlns=\"urn:d\" p:b=\"1\" c=\"2\"/>");
    EXPECT_EQ(FindNames(pDocument.Get(), L"/*/@*"), (Names{L"p:b", L"c"}));
}

TEST_P(XPathSelection, SeesChangesOfTheTree) {
    const DocumentPtr pDocument = From(L"<a><b/></a>");
    EXPECT_EQ(FindNames(pDocument.Get(), L"//c"), Names());
    ASSERT_EQ(RootOf(pDocument)->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"c").Get(), nullptr), S_OK);
    EXPECT_EQ(FindNames(pDocument.Get(), L"//c"), Names{L"c"});
    ASSERT_EQ(RootOf(pDocument)->setAttribute(Bstr(L"x").Get(), Variant(std::wstring_view(L"1")).Get()),
              S_OK);
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a[@x = '1']"), Names{L"a"});
    ASSERT_EQ(AttributeOf(RootOf(pDocument).Get(), L"x")->put_text(Bstr(L"2").Get()), S_OK);
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a[@x = '1']"), Names());
    ASSERT_EQ(RootOf(pDocument)->put_text(Bstr(L"t").Get()), S_OK);
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a/node()"), Names{L"#text"});
}

TEST_P(XPathSelection, SeesADeclarationThatWasSetForItsDescendants) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: a declaration that is set is an ordinary attribute";
    const DocumentPtr pDocument = From(L"<a/>");
    const NodePtr pDeclaration = MakeNode(pDocument, NODE_ATTRIBUTE, L"xmlns:k");
    ASSERT_EQ(pDeclaration->put_text(Bstr(L"urn:k").Get()), S_OK);
    ASSERT_EQ(AttributesOf(RootOf(pDocument).Get())->setNamedItem(pDeclaration.Get(), nullptr), S_OK);
    ASSERT_EQ(RootOf(pDocument)->setAttribute(Bstr(L"k:x").Get(), Variant(std::wstring_view(L"1")).Get()),
              S_OK);
    BindPrefixes(pDocument, L"xmlns:n='urn:k'");
    EXPECT_EQ(FindNames(pDocument.Get(), L"//@n:x"), Names{L"k:x"});
}

TEST_P(XPathSelection, AnAttributeCanBeTheContext) {
    const DocumentPtr pDocument = From(L"<a b=\"1\"/>");
    const NodePtr pAttribute = AttributeOf(RootOf(pDocument).Get(), L"b");
    EXPECT_EQ(FindNames(pAttribute.Get(), L".."), Names{L"a"});
}

TEST_P(XPathSelection, TheListOutlivesTheNodesPlace) {
    const DocumentPtr pDocument = From(L"<a><b/><b/></a>");
    ListPtr pList;
    ASSERT_EQ(pDocument->selectNodes(Bstr(L"//b").Get(), pList.Put()), S_OK);
    ASSERT_EQ(RootOf(pDocument)->removeChild(ChildAt(RootOf(pDocument).Get(), 0).Get(), nullptr), S_OK);
    NodePtr pNode;
    ASSERT_EQ(pList->get_item(0, pNode.Put()), S_OK);
    EXPECT_EQ(XmlOf(pNode.Get()), L"<b/>");
    EXPECT_EQ(pList->get_item(2, pNode.Put()), S_FALSE);
    EXPECT_FALSE(pNode);
    EXPECT_EQ(pList->get_item(-1, pNode.Put()), S_FALSE);
}

TEST_P(XPathSelection, TheListWalksByNextNode) {
    const DocumentPtr pDocument = From(L"<a><b/><c/></a>");
    ListPtr pList;
    ASSERT_EQ(pDocument->selectNodes(Bstr(L"/a/*").Get(), pList.Put()), S_OK);
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

using KitXPath = KitDom;

TEST_F(KitXPath, SelectsAllKindsOfNodes) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\"?><?top?><a>t<![CDATA[d]]><!--c--><?p?></a>");
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a/node()"),
              (Names{L"#text", L"#cdata-section", L"#comment", L"p"}));
    EXPECT_EQ(FindNames(pDocument.Get(), L"/processing-instruction()"), Names{L"top"});
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a/text()"), (Names{L"#text", L"#cdata-section"}));
    EXPECT_EQ(FindNames(pDocument.Get(), L"/"), Names{L"#document"});
}

TEST_F(KitXPath, NeighbouringTextNodesStayApart) {
    const DocumentPtr pDocument = From(L"<a>one</a>");
    const NodePtr pText = MakeNode(pDocument, NODE_TEXT, L"");
    ASSERT_EQ(pText->put_text(Bstr(L"two").Get()), S_OK);
    ASSERT_EQ(RootOf(pDocument)->appendChild(pText.Get(), nullptr), S_OK);
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a/text()"), (Names{L"#text", L"#text"}));
}

TEST_F(KitXPath, WorksInATreeThatIsNotOfTheDocument) {
    const DocumentPtr pDocument = From(L"<a><b><c/></b></a>");
    NodePtr pRemoved;
    ASSERT_EQ(RootOf(pDocument)->removeChild(ChildAt(RootOf(pDocument).Get(), 0).Get(), pRemoved.Put()),
              S_OK);
    EXPECT_EQ(FindNames(pRemoved.Get(), L"c"), Names{L"c"});
    EXPECT_EQ(FindNames(pRemoved.Get(), L"//c"), Names{L"c"});
    EXPECT_EQ(FindNames(pRemoved.Get(), L"/"), Names());
    EXPECT_EQ(FindNames(pRemoved.Get(), L".."), Names());
    EXPECT_EQ(FindNames(pDocument.Get(), L"//c"), Names());
    EXPECT_EQ(FindNames(pRemoved.Get(), L"c"), Names{L"c"});
}

TEST_F(KitXPath, WorksInAFragment) {
    const DocumentPtr pDocument = New();
    const NodePtr pFragment = MakeNode(pDocument, NODE_DOCUMENT_FRAGMENT, L"");
    ASSERT_EQ(pFragment->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"x").Get(), nullptr), S_OK);
    ASSERT_EQ(pFragment->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"y").Get(), nullptr), S_OK);
    EXPECT_EQ(FindNames(pFragment.Get(), L"*"), (Names{L"x", L"y"}));
}

TEST_F(KitXPath, FromWhatItDoesNotSeeItFindsNothing) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\"?><a b=\"1\"/>");
    EXPECT_EQ(FindNames(ChildAt(pDocument.Get(), 0).Get(), L".."), Names());
    EXPECT_EQ(FindNames(ChildAt(AttributeOf(RootOf(pDocument).Get(), L"b").Get(), 0).Get(), L".."), Names());
    EXPECT_EQ(FindNames(MakeNode(pDocument, NODE_ATTRIBUTE, L"c").Get(), L"."), Names());
    EXPECT_EQ(FindNames(MakeNode(pDocument, NODE_ENTITY_REFERENCE, L"e").Get(), L"."), Names());
}

TEST_F(KitXPath, ATextMovedIntoAnAttributeIsNoLongerSeen) {
    const DocumentPtr pDocument = From(L"<a b=\"\">text</a>");
    EXPECT_EQ(FindNames(pDocument.Get(), L"//text()"), Names{L"#text"});
    const NodePtr pText = ChildAt(RootOf(pDocument).Get(), 0);
    ASSERT_EQ(AttributeOf(RootOf(pDocument).Get(), L"b")->appendChild(pText.Get(), nullptr), S_OK);
    EXPECT_EQ(FindNames(pText.Get(), L"."), Names());
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a[@b = 'text']"), Names{L"a"});
}

TEST_F(KitXPath, TheNamespaceAxisIsEmpty) {
    const DocumentPtr pDocument = From(L"<a xmlns:p=\"urn:p\"/>");
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a/namespace::*"), Names());
}

TEST_F(KitXPath, TheXmlPrefixIsKnownWithoutADeclaration) {
    const DocumentPtr pDocument = From(L"<a xml:lang=\"en\"/>");
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a/@xml:lang"), Names{L"xml:lang"});
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a[lang('en')]"), Names{L"a"});
}

TEST_F(KitXPath, FindsTextOutsideAscii) {
    const DocumentPtr pDocument = From(L"<a b=\"\x00e4\xd83d\xde00\"><\x00fc/></a>");
    EXPECT_EQ(FindNames(pDocument.Get(), L"/a[@b = \"\x00e4\xd83d\xde00\"]/\x00fc"), Names{L"\x00fc"});
    EXPECT_EQ(SelectOne(pDocument.Get(), L"/a[@b = '\xd800']").result, E_FAIL);
}

TEST_F(KitXPath, ADeepTreeIsNoTrouble) {
    const DocumentPtr pDocument = From(L"<a/>");
    NodePtr pDeepest(RootOf(pDocument).Get());
    for (int i = 0; i < 20000; ++i) {
        NodePtr pNext;
        ASSERT_EQ(pDeepest->appendChild(MakeNode(pDocument, NODE_ELEMENT, L"b").Get(), pNext.Put()), S_OK);
        pDeepest = pNext;
    }
    ASSERT_EQ(pDeepest->put_text(Bstr(L"bottom").Get()), S_OK);
    EXPECT_EQ(FindNames(pDocument.Get(), L"//b[text()]"), Names{L"b"});
    EXPECT_EQ(TextOf(pDocument.Get()), L"bottom");
    NodePtr pClone;
    ASSERT_EQ(pDocument->cloneNode(VARIANT_TRUE, pClone.Put()), S_OK);
    EXPECT_EQ(XmlOf(pClone.Get()), XmlOf(pDocument.Get()));
}

TEST_F(KitXPath, ElementsByTagNameComeInDocumentOrder) {
    const DocumentPtr pDocument = From(L"<a><p:b xmlns:p=\"u\"><c/></p:b><c/></a>");
    const auto names = [&](IXMLDOMElement* pFrom, std::wstring_view name) {
        ListPtr pList;
        EXPECT_EQ(pFrom->getElementsByTagName(Bstr(name).Get(), pList.Put()), S_OK);
        Names found;
        NodePtr pNode;
        while (pList->nextNode(pNode.Put()) == S_OK) found.push_back(NameOf(pNode.Get()));
        return found;
    };
    EXPECT_EQ(names(RootOf(pDocument).Get(), L"*"), (Names{L"p:b", L"c", L"c"}));
    EXPECT_EQ(names(RootOf(pDocument).Get(), L"p:b"), Names{L"p:b"});
    EXPECT_EQ(names(RootOf(pDocument).Get(), L"b"), Names());
    ListPtr pList;
    ASSERT_EQ(pDocument->getElementsByTagName(Bstr(L"*").Get(), pList.Put()), S_OK);
    long length = 0;
    ASSERT_EQ(pList->get_length(&length), S_OK);
    EXPECT_EQ(length, 4);
    EXPECT_EQ(pDocument->getElementsByTagName(Bstr(L"*").Get(), nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace devkit::msxml::tests
