#include "devkit/printschema/difference.h"

#include <gtest/gtest.h>

#include "devkit/printschema/names.h"
#include "tickets.h"

namespace devkit::printschema {
namespace {

using namespace tests;

using Differences = std::vector<Difference>;

// Of two tickets with these contents.
Differences Compare(const std::string& before, const std::string& after) {
    return CompareTickets(ReadFramework(Ticket(before), Tag::PrintTicket),
                          ReadFramework(Ticket(after), Tag::PrintTicket));
}

TEST(Difference, ThereIsNoneInOrderPrefixesOrLayout) {
    const std::string before =
        Sheet("psk:ISOA4", 210000, 297000) + Parameter("psk:JobCopiesAllDocuments", "2") +
        Select("psk:JobInputBin", "psk:Manual", Scored("psk:F", "QName", "psk:LongEdgeFirst"));
    const std::string after =
        "<psf:ParameterInit name='psk:JobCopiesAllDocuments'> <psf:Value xsi:type='xsd:integer'> 2 "
        "</psf:Value>"
        "</psf:ParameterInit><psf:Feature name='k:JobInputBin' xmlns:k='" +
        std::string(kKeywordsUri) +
        "'><psf:Option name='k:Manual'><psf:ScoredProperty name='k:F'><psf:Value "
        "xsi:type='xsd:QName'>k:LongEdgeFirst"
        "</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>" +
        Select("psk:PageMediaSize", "psk:ISOA4",
               Scored("psk:MediaSizeHeight", "integer", "297000") +
                   Scored("psk:MediaSizeWidth", "integer", "210000"));
    EXPECT_EQ(Differences(), Compare(before, after));
}

TEST(Difference, TellsWhatChangedWentAndCame) {
    EXPECT_EQ(
        (Differences{{"psk:PageOrientation", "psk:Portrait", "psk:Landscape"},
                     {"psk:JobCopiesAllDocuments", "1", std::nullopt},
                     {"acme:PageStamp", std::nullopt, "acme:On"}}),
        Compare(Select("psk:PageOrientation", "psk:Portrait") + Parameter("psk:JobCopiesAllDocuments", "1"),
                Select("acme:PageStamp", "acme:On") + Select("psk:PageOrientation", "psk:Landscape")));
}

TEST(Difference, CountsPropertiesOfOptions) {
    EXPECT_EQ((Differences{{"psk:PageMediaSize",
                            "psk:CustomMediaSize (psk:MediaSizeHeight 2, psk:MediaSizeWidth 1)",
                            "psk:CustomMediaSize (psk:MediaSizeHeight 3, psk:MediaSizeWidth 1)"}}),
              Compare(Sheet("psk:CustomMediaSize", 1, 2), Sheet("psk:CustomMediaSize", 1, 3)));
}

TEST(Difference, JoinsTheOptionsOfAFeature) {
    const auto options = [](const std::string& names) {
        return "<psf:Feature name='psk:JobOutputFinish'>" + names + "</psf:Feature>";
    };
    const std::string both = "<psf:Option name='psk:Punch'/><psf:Option name='psk:Staple'/>";
    EXPECT_EQ((Differences{{"psk:JobOutputFinish", "psk:Punch and psk:Staple", "psk:Staple"}}),
              Compare(options(both), options("<psf:Option name='psk:Staple'/>")));
    EXPECT_EQ(
        Differences(),
        Compare(options(both), options("<psf:Option name='psk:Staple'/><psf:Option name='psk:Punch'/>")));
}

TEST(Difference, SeesWhatIsTooLongToShow) {
    const std::string data(1000, 'x');
    EXPECT_EQ(
        (Differences{{"dev:PageSnapshot", "(1000 characters)", "(1000 characters)"}}),
        Compare(Parameter("dev:PageSnapshot", data), Parameter("dev:PageSnapshot", "y" + data.substr(1))));
    EXPECT_EQ(Differences(),
              Compare(Parameter("dev:PageSnapshot", data), Parameter("dev:PageSnapshot", data)));
}

TEST(Difference, TellsNamesOfOnePrefixApart) {
    const auto ticket = [](const char* uri) {
        return ReadFramework("<f:PrintTicket xmlns:f='" + std::string(kFrameworkUri) + "' xmlns:p='" + uri +
                                 "' version='1'><f:Feature name='p:PageA'><f:Option name='p:B'/></f:Feature>"
                                 "</f:PrintTicket>",
                             Tag::PrintTicket);
    };
    EXPECT_EQ((Differences{{"p:PageA", "p:B", std::nullopt}, {"p':PageA", std::nullopt, "p':B"}}),
              CompareTickets(ticket("urn:one"), ticket("urn:two")));
}

}  // namespace
}  // namespace devkit::printschema
