#include "base/xml/xmlmarger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/logging/exceptions.h"
#include "base/xml/xmlutility.h"
#include "domtest.h"
#include "domtext.h"
#include "platform/bstr.h"
#include "platform/variant.h"
#include "thrown.h"

namespace {

using base::exception::HresultError;
using base::xml::DocumentView;
using base::xml::LoadDomFromString;
using base::xml::XmlMarger;
using base::xml::XmlNodeComparator;
using platform::Bstr;
using platform::ComPtr;
using platform::Variant;

using Dom = ComPtr<IXMLDOMDocument2>;

std::wstring NameOf(IXMLDOMNode* pNode) {
    Bstr name;
    EXPECT_EQ(S_OK, pNode->get_nodeName(name.Put()));
    return std::wstring(name.View());
}

// The node's name with the value of its "id" attribute, as in "a#1"; "a" without one.
std::wstring TextKeyOf(IXMLDOMNode* pNode) {
    std::wstring key = NameOf(pNode);
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    if (pNode->get_attributes(pAttributes.Put()) != S_OK) return key;
    ComPtr<IXMLDOMNode> pId;
    if (pAttributes->getNamedItem(Bstr(L"id").Get(), pId.Put()) != S_OK) return key;
    Bstr id;
    EXPECT_EQ(S_OK, pId->get_text(id.Put()));
    return key + L"#" + std::wstring(id.View());
}

// Nodes with equal keys are the same. Notes every pair, first node first.
class KeyComparator : public XmlNodeComparator {
  public:
    bool IsSameNode(IXMLDOMNode* pFirst, IXMLDOMNode* pSecond) const override {
        const std::wstring first = TextKeyOf(pFirst);
        const std::wstring second = TextKeyOf(pSecond);
        pairs.push_back(first + L"|" + second);
        if (pairs.size() == throwAt) throw HresultError(E_ABORT, "comparator", 1);
        return first == second;
    }

    std::size_t throwAt = 0;
    mutable std::vector<std::wstring> pairs;
};

std::wstring TextOf(const Dom& dom) { return tests::DomText(dom.Get()); }

class XmlMargerTest : public tests::DomTest {
  protected:
    std::wstring Merged(std::wstring_view base, std::wstring_view target) {
        const Dom pBase = LoadDomFromString(base);
        const Dom pTarget = LoadDomFromString(target);
        XmlMarger(m_comparator).Merge(pBase.Get(), pTarget.Get());
        EXPECT_EQ(target, TextOf(pTarget));
        return TextOf(pBase);
    }

    KeyComparator m_comparator;
};

TEST_F(XmlMargerTest, ATargetElementThatMatchesNoBaseSiblingIsAppendedAtTheEndWithItsWholeSubtree) {
    EXPECT_EQ(L"<r><a id=\"1\"/><b/><a id=\"2\"><c d=\"e\">t<f/></c></a></r>",
              Merged(L"<r><a id=\"1\"/><b/></r>", L"<r><a id=\"2\"><c d=\"e\">t<f/></c></a></r>"));
}

TEST_F(XmlMargerTest, AMatchingTargetElementIsNotCopiedAndItsChildrenAreMergedIntoTheBaseElement) {
    EXPECT_EQ(L"<r><a id=\"1\"><x/><y/></a><b/></r>",
              Merged(L"<r><a id=\"1\"><x/></a><b/></r>", L"<r><a id=\"1\"><y/></a></r>"));
}

TEST_F(XmlMargerTest, TheBaseWinsForEveryValueThatBothCarry) {
    EXPECT_EQ(L"<r><a>base</a></r>", Merged(L"<r><a>base</a></r>", L"<r><a>target</a></r>"));
}

TEST_F(XmlMargerTest, AttributesOfAMatchedElementStayAsTheBaseHasThem) {
    EXPECT_EQ(L"<r><a v=\"1\"/></r>", Merged(L"<r><a v=\"1\"/></r>", L"<r><a v=\"2\" w=\"3\"/></r>"));
}

TEST_F(XmlMargerTest, TwoBaseChildrenThatBothMatchOneTargetChildAreBothMergedWithIt) {
    EXPECT_EQ(L"<r><a><x/><z/></a><a><y/><z/></a></r>",
              Merged(L"<r><a><x/></a><a><y/></a></r>", L"<r><a><z/></a></r>"));
}

TEST_F(XmlMargerTest, ABaseNodeWithoutChildrenReceivesNothing) {
    EXPECT_EQ(L"<r><a/></r>", Merged(L"<r><a/></r>", L"<r><a><b/></a></r>"));
    EXPECT_EQ(L"<r/>", Merged(L"<r/>", L"<r><a/></r>"));
}

TEST_F(XmlMargerTest, ATargetNodeWithoutChildrenChangesNothing) {
    EXPECT_EQ(L"<r><a><b/></a></r>", Merged(L"<r><a><b/></a></r>", L"<r><a/></r>"));
}

TEST_F(XmlMargerTest, AnEmptyDocumentOnEitherSideChangesNothing) {
    const Dom empty = base::xml::CreateDom();
    const Dom full = LoadDomFromString(L"<r><a/></r>");
    XmlMarger merger(m_comparator);
    merger.Merge(empty.Get(), full.Get());
    ComPtr<IXMLDOMElement> root;
    EXPECT_EQ(S_FALSE, empty->get_documentElement(root.Put()));
    merger.Merge(full.Get(), empty.Get());
    EXPECT_EQ(L"<r><a/></r>", TextOf(full));
    EXPECT_THAT(m_comparator.pairs, testing::IsEmpty());
}

TEST_F(XmlMargerTest, MissingNodesAreAppendedInTheOrderOfTheTarget) {
    EXPECT_EQ(L"<r><m/><c/><a/><!--n--><b/></r>", Merged(L"<r><m/></r>", L"<r><c/><m/><a/><!--n--><b/></r>"));
}

TEST_F(XmlMargerTest, NodesAppendedByAMergeAreNotComparedWithinIt) {
    EXPECT_EQ(L"<r><m/><a/><a/></r>", Merged(L"<r><m/></r>", L"<r><a/><a/></r>"));
    EXPECT_THAT(m_comparator.pairs, testing::ElementsAre(L"r|r", L"m|a", L"m|a"));
}

TEST_F(XmlMargerTest, EveryTargetChildIsComparedWithEveryBaseChildTheBaseNodeFirst) {
    Merged(L"<r><a/><b/></r>", L"<r><b/><c/></r>");
    EXPECT_THAT(m_comparator.pairs, testing::ElementsAre(L"r|r", L"a|b", L"b|b", L"a|c", L"b|c"));
}

TEST_F(XmlMargerTest, MergingTheSameTargetAgainChangesNothing) {
    const Dom base = LoadDomFromString(L"<r><a><x/></a></r>");
    const Dom target = LoadDomFromString(L"<r><a><y>t</y></a><b/></r>");
    XmlMarger merger(m_comparator);
    merger.Merge(base.Get(), target.Get());
    const std::wstring once = TextOf(base);
    merger.Merge(base.Get(), target.Get());
    EXPECT_EQ(L"<r><a><x/><y>t</y></a><b/></r>", once);
    EXPECT_EQ(once, TextOf(base));
}

TEST_F(XmlMargerTest, AnXmlDeclarationThatTheBaseLacksIsNotPutBack) {
    EXPECT_EQ(L"<r><a/><b/></r>", Merged(L"<r><a/></r>", L"<?xml version=\"1.0\"?>\r\n<r><b/></r>"));
}

TEST_F(XmlMargerTest, NamespaceDeclarationsOfAMatchedTargetElementAreCopiedOntoTheBaseElement) {
    EXPECT_EQ(L"<r xmlns:p=\"urn:p\" xmlns:k=\"urn:k\"><a/><k:b k:c=\"1\"/></r>",
              Merged(L"<r xmlns:p=\"urn:p\"><a/></r>", L"<r xmlns:k=\"urn:k\"><k:b k:c=\"1\"/></r>"));
}

TEST_F(XmlMargerTest, DeclarationsAreCopiedOntoEveryBaseElementThatMatches) {
    EXPECT_EQ(L"<r><a xmlns:k=\"urn:k\"><x/><y/></a><a xmlns:k=\"urn:k\"><x/><y/></a></r>",
              Merged(L"<r><a><x/></a><a><x/></a></r>", L"<r><a xmlns:k=\"urn:k\"><y/></a></r>"));
}

TEST_F(XmlMargerTest, DeclarationsAreCopiedAlsoOntoABaseElementWithoutChildren) {
    EXPECT_EQ(L"<r xmlns:k=\"urn:k\"/>", Merged(L"<r/>", L"<r xmlns:k=\"urn:k\"><k:b/></r>"));
}

TEST_F(XmlMargerTest, APrefixDeclaredOnBothTakesTheTargetsValue) {
    const Dom base = LoadDomFromString(L"<r xmlns:p=\"urn:base\"><a/></r>");
    const Dom target = LoadDomFromString(L"<r xmlns:p=\"urn:target\"><a/></r>");
    XmlMarger(m_comparator).Merge(base.Get(), target.Get());
    ComPtr<IXMLDOMElement> root;
    ASSERT_EQ(S_OK, base->get_documentElement(root.Put()));
    Variant value;
    ASSERT_EQ(S_OK, root->getAttribute(Bstr(L"xmlns:p").Get(), value.Put()));
    EXPECT_EQ(L"urn:target", Bstr(value.Text()).View());
}

TEST_F(XmlMargerTest, ADefaultDeclarationIsNotCopied) {
    const Dom base = LoadDomFromString(L"<r><a/></r>");
    const Dom target = LoadDomFromString(L"<r xmlns=\"urn:d\"><a/></r>");
    XmlMarger(m_comparator).Merge(base.Get(), target.Get());
    EXPECT_EQ(L"<r><a/></r>", TextOf(base));
}

TEST_F(XmlMargerTest, AttributesWhoseNameOnlyContainsTheDeclarationPrefixAreNoDeclarations) {
    EXPECT_EQ(L"<r><a/></r>", Merged(L"<r><a/></r>", L"<r xmlnsk=\"1\" q=\"xmlns:\"><a/></r>"));
}

TEST_F(XmlMargerTest, ASecondRootElementIsRefused) {
    const Dom base = LoadDomFromString(L"<r><a/></r>");
    const Dom target = LoadDomFromString(L"<s><b/></s>");
    EXPECT_THROW(XmlMarger(m_comparator).Merge(base.Get(), target.Get()), HresultError);
    EXPECT_EQ(L"<r><a/></r>", TextOf(base));
}

TEST_F(XmlMargerTest, AMergeThatFailsPartWayKeepsWhatIsDoneAndAppendsNothingOfTheCurrentLevel) {
    const Dom base = LoadDomFromString(L"<r><a><x/></a></r>");
    const Dom target = LoadDomFromString(L"<r xmlns:k=\"urn:k\"><n/><a><y/></a><o/></r>");
    m_comparator.throwAt = 5;  // r|r, a|n, a|a, x|y, a|o
    EXPECT_THROW(XmlMarger(m_comparator).Merge(base.Get(), target.Get()), HresultError);
    EXPECT_EQ(L"<r xmlns:k=\"urn:k\"><a><x/><y/></a></r>", TextOf(base));
}

TEST_F(XmlMargerTest, ANullBaseFailsBeforeTheTargetIsLookedAt) {
    const Dom target = LoadDomFromString(L"<r/>");
    for (IXMLDOMDocument2* pTarget : {target.Get(), static_cast<IXMLDOMDocument2*>(nullptr)}) {
        EXPECT_EQ(
            "base/xml/xmlmarger.cpp(LINE) : pBase is null.\n",
            tests::Thrown<std::invalid_argument>([&] { XmlMarger(m_comparator).Merge(nullptr, pTarget); }));
    }
}

TEST_F(XmlMargerTest, ANullTargetFails) {
    const Dom base = LoadDomFromString(L"<r/>");
    EXPECT_EQ("base/xml/xmlmarger.cpp(LINE) : pTarget is null.\n", tests::Thrown<std::invalid_argument>([&] {
                  XmlMarger(m_comparator).Merge(base.Get(), nullptr);
              }));
}

// Knows nodes by their keys, and notes each that it is asked for.
class KeyedComparator final : public KeyComparator {
  public:
    std::optional<std::wstring> KeyOf(IXMLDOMNode* pNode) const override {
        asked.push_back(TextKeyOf(pNode));
        return asked.back();
    }

    mutable std::vector<std::wstring> asked;
};

TEST_F(XmlMargerTest, DocumentsOfSeveralMergesAreReadOnce) {
    const KeyedComparator comparator;
    XmlMarger merger(comparator);
    const Dom pTarget = LoadDomFromString(L"<t><a id=\"2\"><y/></a><b/></t>");
    DocumentView target(pTarget.Get());
    for (int i = 0; i < 2; ++i) {
        const Dom pBase = LoadDomFromString(L"<t><a id=\"2\"><x/></a></t>");
        DocumentView base(pBase.Get());
        comparator.asked.clear();
        merger.Merge(base, target);
        const std::wstring merged = L"<t><a id=\"2\"><x/><y/></a><b/></t>";
        EXPECT_EQ(merged, TextOf(pBase));
        const std::vector<std::wstring> both = {L"t", L"t", L"a#2", L"a#2", L"x", L"y", L"b"};
        const std::vector<std::wstring> baseAlone = {L"t", L"a#2", L"x"};
        EXPECT_EQ(i == 0 ? both : baseAlone, comparator.asked);
        comparator.asked.clear();
        merger.Merge(base, target);
        EXPECT_EQ(merged, TextOf(pBase));
        EXPECT_THAT(comparator.asked, testing::IsEmpty());
    }
    EXPECT_THAT(comparator.pairs, testing::IsEmpty());
}

TEST_F(XmlMargerTest, WhatOneMergeAppendsTheNextOneMergesWith) {
    const KeyedComparator comparator;
    const Dom pBase = LoadDomFromString(L"<t><a/></t>");
    const Dom pFirst = LoadDomFromString(L"<t><b><x/></b></t>");
    const Dom pSecond = LoadDomFromString(L"<t xmlns:k=\"urn:k\"><b><y/></b><c/></t>");
    DocumentView base(pBase.Get());
    DocumentView first(pFirst.Get());
    DocumentView second(pSecond.Get());
    XmlMarger(comparator).Merge(base, first);
    XmlMarger(comparator).Merge(base, second);
    EXPECT_EQ(L"<t xmlns:k=\"urn:k\"><a/><b><x/><y/></b><c/></t>", TextOf(pBase));
    EXPECT_EQ(L"<t><b><x/></b></t>", TextOf(pFirst));
}

}  // namespace
