#include "devkit/printschema/ticketcheck.h"

#include <gtest/gtest.h>

#include "tickets.h"

namespace devkit::printschema {
namespace {

using namespace tests;

using Lines = std::vector<std::string>;
using Kind = TicketProblem::Kind;

constexpr const char* kKeywordsTwice =
    R"(<psf:PrintTicket xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
 version="1" xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
 xmlns:ns0="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
 xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema">)";

// The problems of a ticket, all of the one kind.
Lines Problems(std::string_view bytes, Kind kind) {
    Lines lines;
    for (const TicketProblem& problem : CheckTicket(bytes)) {
        EXPECT_EQ(kind, problem.kind) << problem.text;
        lines.push_back(problem.text);
    }
    return lines;
}

// The broken rules of a ticket with these children.
Lines Broken(std::string_view children) { return Problems(Ticket(children), Kind::BrokenRule); }

Lines Unreadable(std::string_view bytes) { return Problems(bytes, Kind::NoTicket); }

TEST(TicketCheck, AGoodTicketHasNoProblem) {
    EXPECT_EQ(Lines{}, Broken(""));
    EXPECT_EQ(Lines{},
              Broken(Select("psk:PageScaling", "psk:Custom", Reference("psk:Scale", "psk:PageScalingScale")) +
                     Parameter("psk:PageScalingScale", " -7 ") + TextProperty("psk:JobName", "report") +
                     Sheet("psk:ISOA4", 210000, 297000) +
                     "<psf:Feature name=\"acme:PageBorder\"><psf:Feature name=\"acme:Style\">"
                     "<psf:Option/></psf:Feature></psf:Feature>"));
}

TEST(TicketCheck, WhatCannotBeReadIsNoTicket) {
    ASSERT_EQ(1U, Unreadable("<a>").size());
    EXPECT_EQ(Lines{"The root element is not PrintTicket"}, Unreadable("<a/>"));
    EXPECT_EQ(Lines{"A Feature has no name"}, Unreadable(Ticket("<psf:Feature/>")));
    EXPECT_EQ(Lines{"Duplicate definitions exist for feature or parameter PageOrientation"},
              Unreadable(Ticket(Select("psk:PageOrientation", "psk:Portrait") +
                                Select("psk:PageOrientation", "psk:Landscape"))));
}

TEST(TicketCheck, NamespacesAsDocumentationPagesShowThemAreExplained) {
    EXPECT_EQ(
        Lines{"The root element is not PrintTicket; its namespaces begin with https, the Print Schema's with "
              "http"},
        Unreadable("<psf:PrintTicket version=\"1\" xmlns:psf="
                   "\"https://schemas.microsoft.com/windows/2003/08/printing/printschemaframework\"/>"));
}

TEST(TicketCheck, OneNameUnderTwoPrefixesOfOneNamespaceIsExplained) {
    const auto twice = [](std::string_view inside) {
        return Problems(kKeywordsTwice + std::string(inside) + "</psf:PrintTicket>", Kind::TwoPrefixes);
    };
    const Lines expected{
        "PageOrientation twice, as psk:PageOrientation and ns0:PageOrientation: two prefixes of one "
        "namespace"};
    EXPECT_EQ(expected, twice(Select("psk:PageOrientation", "psk:Portrait") +
                              Select("ns0:PageOrientation", "psk:Landscape")));
    EXPECT_EQ(expected,
              twice("<psf:Feature name=\"psk:PageX\">" + Select("psk:PageOrientation", "psk:Portrait") +
                    Select("ns0:PageOrientation", "psk:Landscape") + "</psf:Feature>"));
    // Not siblings, or not of one element.
    EXPECT_EQ(Lines{}, twice("<psf:Feature name=\"psk:PageX\">" + Select("psk:Inner", "psk:One") +
                             "</psf:Feature><psf:Feature name=\"ns0:PageY\">" +
                             Select("ns0:Inner", "ns0:One") + "</psf:Feature>"));
    EXPECT_EQ(Lines{}, twice(Select("psk:PageX", "psk:One") + TextProperty("ns0:PageX", "text")));
    EXPECT_EQ(Lines{},
              twice("<psf:Feature name=\"psk:PageX\"><psf:Option name=\"psk:A\"/><psf:Option name=\"ns0:A\"/>"
                    "</psf:Feature>"));
}

TEST(TicketCheck, EmptyElementsBreakRules) {
    EXPECT_EQ(Lines{"the feature psk:PageOrientation holds neither an option nor a feature"},
              Broken("<psf:Feature name=\"psk:PageOrientation\"/>"));
    EXPECT_EQ(Lines{"the property psk:JobName holds neither a value nor a property"},
              Broken("<psf:Property name=\"psk:JobName\"/>"));
    EXPECT_EQ(Lines{"the parameter psk:JobCopies has no value"},
              Broken("<psf:ParameterInit name=\"psk:JobCopies\"/>"));
}

TEST(TicketCheck, WhatOnlyCapabilitiesHaveBreaksARule) {
    EXPECT_EQ(Lines{"the option psk:Portrait is constrained, which only an option of capabilities is"},
              Broken("<psf:Feature name=\"psk:PageOrientation\">"
                     "<psf:Option name=\"psk:Portrait\" constrained=\"psk:None\"/></psf:Feature>"));
}

TEST(TicketCheck, ValuesAreOfTheirType) {
    const auto value = [](const char* type, const char* text) {
        return Broken(Select("psk:PageX", "psk:One", Scored("psk:Size", type, text)));
    };
    for (const char* const good : {"0", "-12", "+3", " 7 ", ""}) EXPECT_EQ(Lines{}, value("integer", good));
    EXPECT_EQ(Lines{"the value \"12.5\" of the scored property psk:Size is no integer"},
              value("integer", "12.5"));
    for (const char* const good : {"0", "-1.25", "+.5", ""}) EXPECT_EQ(Lines{}, value("decimal", good));
    EXPECT_EQ(Lines{"the value \"1e3\" of the scored property psk:Size is no decimal number"},
              value("decimal", "1e3"));
    EXPECT_EQ(Lines{}, value("QName", "psk:Portrait"));
    EXPECT_EQ(
        Lines{"the value of the scored property psk:Size has the type xsd:float, which is none of string, "
              "integer, decimal and QName"},
        value("float", "1"));
}

TEST(TicketCheck, RootEntriesNameTheirScope) {
    const char* const kSuffix = " stands at the root and begins with none of Job, Document and Page";
    EXPECT_EQ(Lines{std::string("the feature acme:Stamp") + kSuffix},
              Broken(Select("acme:Stamp", "acme:On")));
    EXPECT_EQ(Lines{std::string("the parameter psk:pageCopies") + kSuffix},
              Broken(Parameter("psk:pageCopies", "1")));
    EXPECT_EQ(Lines{std::string("the property psk:Name") + kSuffix}, Broken(TextProperty("psk:Name", "x")));
}

TEST(TicketCheck, EveryBrokenRuleIsTold) {
    EXPECT_EQ(3U,
              Broken("<psf:Feature name=\"acme:Stamp\"/><psf:ParameterInit name=\"psk:JobCopies\"/>").size());
}

}  // namespace
}  // namespace devkit::printschema
