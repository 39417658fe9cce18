#include "devkit/printschema/summary.h"

#include <gtest/gtest.h>

#include "tickets.h"

namespace devkit::printschema {
namespace {

using namespace tests;

using Texts = std::vector<std::string>;

// The settings of a ticket with that content, each as "NAME = VALUE".
Texts Settings(const std::string& content) {
    const FrameworkDocument ticket = ReadFramework(Ticket(content), Tag::PrintTicket);
    Texts texts;
    for (const Setting& setting : SettingsOf(ticket.root, ticket.prefixes)) {
        texts.push_back(setting.name + " = " + setting.value);
    }
    return texts;
}

TEST(Settings, OfFeaturesAreTheirOptionsWithProperties) {
    EXPECT_EQ(
        (Texts{"psk:PageMediaSize = psk:ISOA4 (psk:MediaSizeWidth 210000, psk:Empty, psk:Note x y)",
               "psk:PageOrientation = psk:Landscape"}),
        Settings(
            Select("psk:PageMediaSize", "psk:ISOA4",
                   Scored("psk:MediaSizeWidth", "integer", "210000") +
                       "<psf:ScoredProperty name='psk:Empty'/>"
                       "<psf:Property name='psk:Note'>\n <psf:Value> x y\n</psf:Value>\n</psf:Property>") +
            Select("psk:PageOrientation", "psk:Landscape")));
}

TEST(Settings, OfParametersAreTheirValues) {
    EXPECT_EQ((Texts{"psk:JobCopiesAllDocuments = 2",
                     "psk:PageScaling = psk:CustomSquare (psk:Scale from psk:PageScalingScale)"}),
              Settings(Parameter("psk:JobCopiesAllDocuments", "2") +
                       Select("psk:PageScaling", "psk:CustomSquare",
                              Reference("psk:Scale", "psk:PageScalingScale"))));
}

TEST(Settings, OfNestedFeaturesStandBehindTheirParents) {
    EXPECT_EQ((Texts{"psk:NUp = (unnamed)", "psk:NUp/psk:Direction = psk:RightBottom"}),
              Settings("<psf:Feature name='psk:NUp'><psf:Option/><psf:Feature name='psk:Direction'>"
                       "<psf:Property name='psk:Ignored'><psf:Value>1</psf:Value></psf:Property>"
                       "<psf:Option name='psk:RightBottom'/></psf:Feature></psf:Feature>"));
}

TEST(Settings, WithLongValuesTellTheirLength) {
    EXPECT_EQ(Texts{"psk:JobA = " + std::string(60, 'x')},
              Settings(Parameter("psk:JobA", std::string(60, 'x'))));
    EXPECT_EQ(Texts{"psk:JobA = (61 characters)"}, Settings(Parameter("psk:JobA", std::string(61, 'x'))));
}

TEST(Settings, HaveThePrefixesOfTheTicket) {
    const FrameworkDocument ticket = ReadFramework(
        Ticket(Select("dev:JobA", "psk:B", Scored("psk:C", "QName", "dev:D"))), Tag::PrintTicket);
    EXPECT_EQ((std::vector<Setting>{{"{http://schemas.example.com/printing/simdevice/v1}JobA",
                                     "k:B (k:C {http://schemas.example.com/printing/simdevice/v1}D)"}}),
              SettingsOf(ticket.root, {{"k", std::string(kKeywordsUri)}}));
}

std::string Bin(const std::string& feature, const std::string& property) {
    return Select("psk:" + feature, "psk:Manual", property);
}

TEST(TicketFacts, HaveTheNameOfTheSheet) {
    const TicketFacts facts = ReadFacts(Ticket(Select("psk:PageMediaSize", "psk:ISOA4")));
    EXPECT_EQ("ISOA4", facts.mediaSize);
    EXPECT_EQ(std::nullopt, facts.feedDirection);
}

TEST(TicketFacts, HaveTheSizeOfASheetWithoutAName) {
    const TicketFacts facts = ReadFacts(Ticket("<psf:Feature name='psk:PageMediaSize'><psf:Option>" +
                                               Scored("psk:MediaSizeWidth", "integer", "210000") +
                                               Scored("psk:MediaSizeHeight", "integer", " 297000 ") +
                                               "</psf:Option></psf:Feature>"));
    EXPECT_EQ("210000 x 297000 um", facts.mediaSize);
}

TEST(TicketFacts, HaveTheFeedDirectionOfEveryKindOfBin) {
    EXPECT_EQ("LongEdgeFirst",
              ReadFacts(Ticket(Bin("JobInputBin", Scored("psk:FeedDirection", "QName", "psk:LongEdgeFirst"))))
                  .feedDirection);
    EXPECT_EQ(
        "LongEdgeFirst",
        ReadFacts(Ticket(Bin("DocumentInputBin", Scored("psk:FeedDirection", "string", "LongEdgeFirst"))))
            .feedDirection);
    EXPECT_EQ("ShortEdgeFirst",
              ReadFacts(Ticket(Bin("PageInputBin", TextProperty("psk:FeedDirection", "no:ShortEdgeFirst"))))
                  .feedDirection);
}

TEST(TicketFacts, OfThePagesBinComeBeforeThoseOfTheJobs) {
    EXPECT_EQ(
        "ShortEdgeFirst",
        ReadFacts(Ticket(Bin("JobInputBin", Scored("psk:FeedDirection", "QName", "psk:LongEdgeFirst")) +
                         Bin("PageInputBin", Scored("psk:FeedDirection", "QName", "psk:ShortEdgeFirst"))))
            .feedDirection);
}

TEST(TicketFacts, AreNotSetForATextThatIsNoTicket) {
    for (const char* text : {"", "no xml", "<PrintTicket/>", "<a><b></a>"}) {
        EXPECT_EQ(TicketFacts(), ReadFacts(text)) << text;
    }
}

}  // namespace
}  // namespace devkit::printschema
