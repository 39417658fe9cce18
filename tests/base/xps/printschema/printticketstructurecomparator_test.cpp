#include "base/xps/printschema/printticketstructurecomparator.h"

#include <gtest/gtest.h>

#include <string_view>

#include "base/xml/xmlmarger.h"
#include "base/xml/xmlutility.h"
#include "domtest.h"
#include "domtext.h"
#include "platform/comptr.h"
#include "ticketmarkup.h"

namespace {

using base::xml::LoadDomFromString;
using base::xps::printschema::PrintTicketStructureComparator;
using platform::ComPtr;
using tests::Ticket;

ComPtr<IXMLDOMNode> FirstChildOfRoot(IXMLDOMDocument2* pDom) {
    ComPtr<IXMLDOMElement> root;
    EXPECT_EQ(S_OK, pDom->get_documentElement(root.Put()));
    ComPtr<IXMLDOMNode> child;
    EXPECT_EQ(S_OK, root->get_firstChild(child.Put()));
    return child;
}

class PrintTicketStructureComparatorTest : public tests::DomTest {
  protected:
    // Compares the first children of two tickets' roots, both ways.
    bool Same(std::wstring_view first, std::wstring_view second) {
        const ComPtr<IXMLDOMDocument2> pFirst = LoadDomFromString(Ticket(first));
        const ComPtr<IXMLDOMDocument2> pSecond = LoadDomFromString(Ticket(second));
        const ComPtr<IXMLDOMNode> a = FirstChildOfRoot(pFirst.Get());
        const ComPtr<IXMLDOMNode> b = FirstChildOfRoot(pSecond.Get());
        const PrintTicketStructureComparator comparator;
        const bool same = comparator.IsSameNode(a.Get(), b.Get());
        EXPECT_EQ(same, comparator.IsSameNode(b.Get(), a.Get()));
        return same;
    }
};

TEST_F(PrintTicketStructureComparatorTest, TwoFeaturesOfOneNameAreTheSameWhateverTheirChildren) {
    EXPECT_TRUE(
        Same(L"<psf:Feature name=\"psk:PageMediaSize\"/>",
             L"<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:ISOA4\"/></psf:Feature>"));
}

TEST_F(PrintTicketStructureComparatorTest, OptionsOfDifferentNamesAreDifferent) {
    EXPECT_FALSE(Same(L"<psf:Option name=\"psk:ISOA4\"/>", L"<psf:Option name=\"psk:ISOA5\"/>"));
}

TEST_F(PrintTicketStructureComparatorTest, OptionsWithoutANameAreTheSameAndWithAndWithoutAreDifferent) {
    EXPECT_TRUE(Same(L"<psf:Option/>", L"<psf:Option/>"));
    EXPECT_TRUE(Same(L"<psf:Option/>", L"<psf:Option constrained=\"psk:None\"/>"));
    EXPECT_FALSE(Same(L"<psf:Option/>", L"<psf:Option name=\"psk:ISOA4\"/>"));
}

TEST_F(PrintTicketStructureComparatorTest, AnEmptyNameIsAName) {
    EXPECT_FALSE(Same(L"<psf:Option name=\"\"/>", L"<psf:Option/>"));
    EXPECT_TRUE(Same(L"<psf:Option name=\"\"/>", L"<psf:Option name=\"\"/>"));
}

TEST_F(PrintTicketStructureComparatorTest, TwoTextNodesAreAlwaysTheSame) { EXPECT_TRUE(Same(L"a", L"b")); }

TEST_F(PrintTicketStructureComparatorTest, ValuesAreTheSameWhateverTheirTypeAndText) {
    EXPECT_TRUE(Same(L"<psf:Value xsi:type=\"xsd:integer\">1</psf:Value>",
                     L"<psf:Value xsi:type=\"xsd:string\">2</psf:Value>"));
}

TEST_F(PrintTicketStructureComparatorTest, CommentsAreTheSameAndDifferentFromText) {
    EXPECT_TRUE(Same(L"<!--a-->", L"<!--b-->"));
    EXPECT_FALSE(Same(L"<!--a-->", L"a"));
    EXPECT_FALSE(Same(L"a", L"<psf:Value/>"));
}

TEST_F(PrintTicketStructureComparatorTest, ProcessingInstructionsAreTheSameByTheirTarget) {
    EXPECT_TRUE(Same(L"<?a b?>", L"<?a c?>"));
    EXPECT_FALSE(Same(L"<?a b?>", L"<?c b?>"));
}

TEST_F(PrintTicketStructureComparatorTest, ANodeWithoutAttributesIsNotTheSameAsAnElementOfItsName) {
    EXPECT_FALSE(Same(L"<?a b?>", L"<a/>"));
    EXPECT_FALSE(Same(L"<?a b?>", L"<a name=\"psk:X\"/>"));
}

TEST_F(PrintTicketStructureComparatorTest, OneFeatureUnderTwoPrefixesInItsNameIsTwoFeatures) {
    EXPECT_FALSE(Same(L"<psf:Feature name=\"ns0000:PageMediaSize\" xmlns:ns0000=\"urn:x\"/>",
                      L"<psf:Feature name=\"psk:PageMediaSize\"/>"));
}

TEST_F(PrintTicketStructureComparatorTest, OneElementUnderTwoPrefixesIsTwoElements) {
    const std::wstring other =
        L"<f:Feature xmlns:f=\"" + std::wstring(tests::kFrameworkUri) + L"\" name=\"psk:PageMediaSize\"/>";
    EXPECT_FALSE(Same(other, L"<psf:Feature name=\"psk:PageMediaSize\"/>"));
}

TEST_F(PrintTicketStructureComparatorTest, LetterCaseMatters) {
    EXPECT_FALSE(
        Same(L"<psf:Feature name=\"psk:pagemediasize\"/>", L"<psf:Feature name=\"psk:PageMediaSize\"/>"));
    EXPECT_FALSE(
        Same(L"<psf:feature name=\"psk:PageMediaSize\"/>", L"<psf:Feature name=\"psk:PageMediaSize\"/>"));
}

TEST_F(PrintTicketStructureComparatorTest, ElementsOfDifferentKindsAreDifferent) {
    EXPECT_FALSE(Same(L"<psf:Property name=\"psk:X\"/>", L"<psf:ScoredProperty name=\"psk:X\"/>"));
}

TEST_F(PrintTicketStructureComparatorTest, AMergerPutsBackFeaturesAndKeepsValues) {
    const ComPtr<IXMLDOMDocument2> pBase = LoadDomFromString(Ticket(
        L"<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:ISOA4\">"
        L"<psf:ScoredProperty name=\"psk:MediaSizeWidth\"><psf:Value>210000</psf:Value></psf:ScoredProperty>"
        L"</psf:Option></psf:Feature>"));
    const ComPtr<IXMLDOMDocument2> pTarget = LoadDomFromString(Ticket(
        L"<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:ISOA4\">"
        L"<psf:ScoredProperty name=\"psk:MediaSizeWidth\"><psf:Value>5</psf:Value></psf:ScoredProperty>"
        L"<psf:ScoredProperty name=\"psk:MediaSizeHeight\"><psf:Value>6</psf:Value></psf:ScoredProperty>"
        L"</psf:Option></psf:Feature><psf:Feature name=\"psk:JobInputBin\"/>"));
    const PrintTicketStructureComparator comparator;
    base::xml::XmlMarger(comparator).Merge(pBase.Get(), pTarget.Get());
    EXPECT_EQ(
        Ticket(
            L"<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:ISOA4\">"
            L"<psf:ScoredProperty "
            L"name=\"psk:MediaSizeWidth\"><psf:Value>210000</psf:Value></psf:ScoredProperty>"
            L"<psf:ScoredProperty name=\"psk:MediaSizeHeight\"><psf:Value>6</psf:Value></psf:ScoredProperty>"
            L"</psf:Option></psf:Feature><psf:Feature name=\"psk:JobInputBin\"/>"),
        tests::DomText(pBase.Get()));
}

}  // namespace
