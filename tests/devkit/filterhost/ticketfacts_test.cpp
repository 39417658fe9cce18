#include "devkit/filterhost/ticketfacts.h"

#include <gtest/gtest.h>

namespace devkit::filterhost {
namespace {

std::string Ticket(const std::string& content) {
    return "<psf:PrintTicket xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/"
           "printschemaframework\" version=\"1\">" +
           content + "</psf:PrintTicket>";
}

std::string Bin(const std::string& feature, const std::string& kind, const std::string& direction) {
    return "<psf:Feature name=\"psk:" + feature + "\"><psf:Option name=\"psk:Manual\"><psf:" + kind +
           " name=\"psk:FeedDirection\"><psf:Value>" + direction + "</psf:Value></psf:" + kind +
           "></psf:Option></psf:Feature>";
}

TEST(TicketFacts, ReadsTheNameOfTheSheet) {
    const TicketFacts facts = ReadTicketFacts(
        Ticket("<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:ISOA4\"/></psf:Feature>"));
    EXPECT_EQ(facts.mediaSize, "ISOA4");
    EXPECT_EQ(facts.feedDirection, std::nullopt);
}

TEST(TicketFacts, GivesTheSizeOfASheetWithoutAName) {
    const TicketFacts facts = ReadTicketFacts(Ticket(
        "<psf:Feature name=\"psk:PageMediaSize\"><psf:Option>"
        "<psf:ScoredProperty name=\"psk:MediaSizeWidth\"><psf:Value>210000</psf:Value></psf:ScoredProperty>"
        "<psf:ScoredProperty name=\"psk:MediaSizeHeight\"><psf:Value>297000</psf:Value></psf:ScoredProperty>"
        "</psf:Option></psf:Feature>"));
    EXPECT_EQ(facts.mediaSize, "210000 x 297000 um");
}

TEST(TicketFacts, ReadsTheFeedDirectionOfEveryKindOfBin) {
    EXPECT_EQ(
        ReadTicketFacts(Ticket(Bin("JobInputBin", "ScoredProperty", "psk:LongEdgeFirst"))).feedDirection,
        "LongEdgeFirst");
    EXPECT_EQ(
        ReadTicketFacts(Ticket(Bin("DocumentInputBin", "ScoredProperty", "LongEdgeFirst"))).feedDirection,
        "LongEdgeFirst");
    EXPECT_EQ(ReadTicketFacts(Ticket(Bin("PageInputBin", "Property", "psk:ShortEdgeFirst"))).feedDirection,
              "ShortEdgeFirst");
}

TEST(TicketFacts, ThePagesBinComesBeforeTheJobs) {
    EXPECT_EQ(ReadTicketFacts(Ticket(Bin("JobInputBin", "ScoredProperty", "psk:LongEdgeFirst") +
                                     Bin("PageInputBin", "ScoredProperty", "psk:ShortEdgeFirst")))
                  .feedDirection,
              "ShortEdgeFirst");
}

TEST(TicketFacts, SaysNothingOfATextThatIsNoTicket) {
    for (const char* text : {"", "no xml", "<PrintTicket/>", "<a><b></a>"}) {
        const TicketFacts facts = ReadTicketFacts(text);
        EXPECT_EQ(facts.mediaSize, std::nullopt) << text;
        EXPECT_EQ(facts.feedDirection, std::nullopt) << text;
    }
}

}  // namespace
}  // namespace devkit::filterhost
