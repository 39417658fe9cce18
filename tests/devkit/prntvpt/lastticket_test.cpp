#include "devkit/prntvpt/api/lastticket.h"

#include <gtest/gtest.h>

#include "providertest.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace tests;

LastTicket::DocumentPtr Document() { return std::make_shared<const printschema::FrameworkDocument>(); }

TEST(LastTicket, IsNoneAtFirst) {
    const LastTicket ticket;
    EXPECT_EQ(nullptr, ticket.Find("a"));
    EXPECT_EQ(nullptr, ticket.Find(""));
}

TEST(LastTicket, IsFoundByItsBytesUntilTheNextOneIsKept) {
    LastTicket ticket;
    const LastTicket::DocumentPtr pFirst = Document();
    const LastTicket::DocumentPtr pSecond = Document();
    ticket.Keep("a", pFirst);
    EXPECT_EQ(pFirst, ticket.Find("a"));
    EXPECT_EQ(nullptr, ticket.Find("b"));
    EXPECT_EQ(nullptr, ticket.Find("aa"));
    ticket.Keep("b", pSecond);
    EXPECT_EQ(nullptr, ticket.Find("a"));
    EXPECT_EQ(pSecond, ticket.Find("b"));
    EXPECT_EQ(1, pFirst.use_count());
}

class LastBaseTest : public ProviderTest {};

TEST_F(LastBaseTest, WhatIsMergedIntoABaseIsNotInItTheNextTime) {
    Use({});
    const std::string base = Ticket(Select("psk:PageOrientation", "psk:Portrait"));
    const std::string before = Merge(base, std::nullopt).bytes;
    const WrittenResult merged = Merge(base, Ticket(Select("psk:PageOrientation", "psk:Landscape")));
    EXPECT_EQ("psk:PageOrientation[psk:Landscape]", Line(merged.bytes, "PageOrientation"));
    EXPECT_EQ(before, Merge(base, std::nullopt).bytes);
}

TEST_F(LastBaseTest, AnotherBaseIsRead) {
    Use({});
    for (const char* orientation : {"psk:Portrait", "psk:Landscape", "psk:Portrait"}) {
        const std::string base = Ticket(Select("psk:PageOrientation", orientation));
        EXPECT_EQ("psk:PageOrientation[" + std::string(orientation) + "]",
                  Line(Merge(base, std::nullopt).bytes, "PageOrientation"));
    }
}

TEST_F(LastBaseTest, ABaseThatIsNoTicketIsRefusedEachTime) {
    Use({});
    EXPECT_EQ(kNoConflict, Merge(Ticket(""), std::nullopt).result);
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(kBadBase, Merge("<a/>", std::nullopt).result);
        EXPECT_EQ(kBadBase, Merge("", std::nullopt).result);
    }
    EXPECT_EQ(kNoConflict, Merge(Ticket(""), std::nullopt).result);
}

TEST_F(LastBaseTest, OtherSwitchesReadTheSameBaseInTheirOwnWay) {
    const std::string mixed = Ticket(
        Select("psk:PageMediaSize", "psk:ISOA4",
               R"(<psf:ScoredProperty name="psk:MediaSizeWidth"><psf:Value xsi:type="xsd:integer">210000)"
               R"(</psf:Value><psf:ParameterRef name="psk:PageW"/></psf:ScoredProperty>)"));
    Use({"mixed-values=first"});
    EXPECT_TRUE(SUCCEEDED(Merge(mixed, std::nullopt).result));
    Use({"mixed-values=refuse"});
    EXPECT_EQ(kBadBase, Merge(mixed, std::nullopt).result);
}

TEST_F(LastBaseTest, TwoPrefixesAreToldOfEachTime) {
    Use({"duplicates=first"});
    std::string twice = Ticket(Select("acme:PageStamp", "acme:On") + Select("same:PageStamp", "same:Off"));
    twice.insert(twice.find("xmlns:acme"), "xmlns:same=\"" + std::string(kAcmeUri) + "\" ");
    for (int time = 0; time < 2; ++time) EXPECT_TRUE(SUCCEEDED(Merge(twice, std::nullopt).result));
    const std::vector<ProviderCall> calls = Report().calls;
    ASSERT_EQ(2U, calls.size());
    EXPECT_TRUE(calls[0].twoPrefixes);
    EXPECT_EQ(calls[0].twoPrefixes, calls[1].twoPrefixes);
}

}  // namespace
}  // namespace devkit::prntvpt
