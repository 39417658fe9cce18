// What a DOM may answer that has nothing to give.

#include "base/xml/documentview.h"

#include <gtest/gtest.h>

#include <string_view>
#include <utility>

#include "base/xml/xmlmarger.h"
#include "base/xml/xmlutility.h"
#include "domfaults.h"
#include "domtest.h"
#include "domtext.h"
#include "platform/bstr.h"

namespace {

using base::xml::Declarations;
using base::xml::LoadDomFromString;
using base::xml::NodeView;
using platform::ComPtr;
using tests::DomFaults;

using Dom = ComPtr<IXMLDOMDocument2>;

// The call that claims to have done what it has not: the nth of that name.
std::string_view g_lying;
int g_nth = 0;
bool Lies(const char* name, const void*) { return g_lying == name && --g_nth == 0; }

class DocumentViewTest : public tests::DomTest {
  protected:
    static NodeView RootOf(const Dom& dom) {
        ComPtr<IXMLDOMElement> pRoot;
        EXPECT_EQ(S_OK, dom->get_documentElement(pRoot.Put()));
        return NodeView(ComPtr<IXMLDOMNode>(pRoot.Get()));
    }
    static void Lie(std::string_view call, int nth) {
        g_lying = call;
        g_nth = nth;
    }

    void TearDown() override {
        m_dom.Reset();
        DomTest::TearDown();
    }

    Dom m_dom = LoadDomFromString(L"<r xmlns:a=\"urn:a\" xmlns:b=\"urn:b\"><c/></r>");
};

TEST_F(DocumentViewTest, AnElementWithoutAMapOfAttributesDeclaresNothingAndIsNotAskedAgain) {
    NodeView root = RootOf(m_dom);
    const DomFaults faults(&Lies, S_OK);
    Lie("get_attributes", 1);
    EXPECT_EQ(Declarations{}, root.GetDeclarations());
    EXPECT_EQ(0, g_nth);
    EXPECT_EQ(Declarations{}, root.GetDeclarations());
    EXPECT_EQ(0, g_nth) << "the DOM was asked again";
}

TEST_F(DocumentViewTest, AMapEndsWhereItYieldsNothing) {
    NodeView root = RootOf(m_dom);
    const DomFaults faults(&Lies, S_OK);
    Lie("IXMLDOMNamedNodeMap::nextNode", 2);
    EXPECT_EQ((Declarations{{L"xmlns:a", L"urn:a"}}), root.GetDeclarations());
}

TEST_F(DocumentViewTest, WithoutAMapOfAttributesNothingIsDeclared) {
    NodeView root = RootOf(m_dom);
    const Declarations before = root.GetDeclarations();
    const std::wstring text = tests::DomText(m_dom.Get());
    {
        const DomFaults faults(&Lies, S_OK);
        Lie("get_attributes", 1);
        root.Declare(m_dom.Get(), {{L"xmlns:k", L"urn:k"}});
        EXPECT_EQ(0, g_nth);
    }
    EXPECT_EQ(before, root.GetDeclarations());
    EXPECT_EQ(text, tests::DomText(m_dom.Get()));
}

TEST_F(DocumentViewTest, WhatIsAppendedBeforeTheChildrenAreLookedAtIsAmongThem) {
    NodeView root = RootOf(m_dom);
    NodeView other = RootOf(LoadDomFromString(L"<d/>"));
    root.Append(other.Clone());
    EXPECT_EQ(2u, root.Children().size());
    EXPECT_EQ(L"<r xmlns:a=\"urn:a\" xmlns:b=\"urn:b\"><c/><d/></r>", tests::DomText(m_dom.Get()));
}

// Nodes of one name are the same.
class NameComparator final : public base::xml::XmlNodeComparator {
  public:
    bool IsSameNode(IXMLDOMNode* pFirst, IXMLDOMNode* pSecond) const override {
        platform::Bstr first;
        platform::Bstr second;
        EXPECT_EQ(S_OK, pFirst->get_nodeName(first.Put()));
        EXPECT_EQ(S_OK, pSecond->get_nodeName(second.Put()));
        return first.View() == second.View();
    }
};

TEST_F(DocumentViewTest, ANodeThatSaysThatItHasChildrenAndYieldsNoneMatchesNone) {
    const NameComparator comparator;
    const Dom pTarget = LoadDomFromString(L"<r><c/></r>");
    {
        const DomFaults faults(&Lies, S_OK);
        // The base document, the target document, the base's root.
        Lie("IXMLDOMNodeList::get_length", 3);
        base::xml::XmlMarger(comparator).Merge(m_dom.Get(), pTarget.Get());
        EXPECT_EQ(-1, g_nth);
    }
    EXPECT_EQ(L"<r xmlns:a=\"urn:a\" xmlns:b=\"urn:b\"><c/><c/></r>", tests::DomText(m_dom.Get()));
}

}  // namespace
