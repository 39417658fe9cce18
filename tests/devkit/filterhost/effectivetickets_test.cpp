#include "devkit/filterhost/effectivetickets.h"

#include <gtest/gtest.h>

#include <memory>

namespace devkit::filterhost {
namespace {

using pipeline::Part;
using pipeline::PartKind;
using pipeline::SentPart;

std::string Feature(const std::string& name, const std::string& option, const std::string& content = {}) {
    return "<psf:Feature name=\"psk:" + name + "\"><psf:Option name=\"psk:" + option + "\">" + content +
           "</psf:Option></psf:Feature>";
}

std::string Ticket(const std::string& content) {
    return "<psf:PrintTicket xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/"
           "printschemaframework\">" +
           content + "</psf:PrintTicket>";
}

std::string Sheet(const std::string& name) { return Ticket(Feature("PageMediaSize", name)); }

SentPart Sent(PartKind kind, bool ticket) {
    SentPart sent{kind, "/part", std::make_shared<Part>(kind, "/part")};
    if (ticket) sent.part->inputTicket = std::make_shared<Part>(PartKind::PrintTicket, "/ticket.xml");
    return sent;
}

prntvpt::ProviderCall Merge(const char* scope, const std::string& output, HRESULT result = S_OK) {
    prntvpt::ProviderCall call;
    call.function = "PTMergeAndValidatePrintTicket";
    call.scope = scope;
    call.output = output;
    call.result = result;
    return call;
}

std::vector<std::string> Sheets(const std::vector<TicketFacts>& facts) {
    std::vector<std::string> names;
    for (const TicketFacts& each : facts) names.push_back(each.mediaSize.value_or("unset"));
    return names;
}

TEST(EffectiveTickets, APageHasItsOwnMergeOrWhatHoldsAroundIt) {
    const std::vector<SentPart> parts{
        Sent(PartKind::XpsDocument, false),  Sent(PartKind::FixedDocumentSequence, true),
        Sent(PartKind::FixedDocument, true), Sent(PartKind::FixedPage, false),
        Sent(PartKind::FixedPage, true),     Sent(PartKind::FixedDocument, false),
        Sent(PartKind::FixedPage, false)};
    prntvpt::ProviderReport report;
    report.calls = {Merge("job", Sheet("Job")), Merge("document", Sheet("Document")),
                    Merge("page", Sheet("Page"))};
    EXPECT_EQ(Sheets(EffectiveTickets(parts, report, Sheet("User"))),
              (std::vector<std::string>{"Document", "Page", "Job"}));
}

TEST(EffectiveTickets, WithoutTicketsTheUsersHolds) {
    const std::vector<SentPart> parts{Sent(PartKind::FixedDocumentSequence, false),
                                      Sent(PartKind::FixedDocument, false), Sent(PartKind::FixedPage, false)};
    EXPECT_EQ(Sheets(EffectiveTickets(parts, {}, Sheet("User"))), std::vector<std::string>{"User"});
}

TEST(EffectiveTickets, WhatThePagesMergeLeavesOutComesFromTheWiderScope) {
    const std::vector<SentPart> parts{Sent(PartKind::FixedDocumentSequence, true),
                                      Sent(PartKind::FixedDocument, false), Sent(PartKind::FixedPage, true)};
    prntvpt::ProviderReport report;
    report.calls = {
        Merge("job",
              Ticket(Feature("PageMediaSize", "Job") +
                     Feature("JobInputBin", "Tray",
                             "<psf:ScoredProperty name=\"psk:FeedDirection\"><psf:Value>psk:LongEdgeFirst"
                             "</psf:Value></psf:ScoredProperty>"))),
        Merge("page", Sheet("Page"))};
    const std::vector<TicketFacts> facts = EffectiveTickets(parts, report, Sheet("User"));
    ASSERT_EQ(facts.size(), 1U);
    EXPECT_EQ(facts[0].mediaSize, "Page");
    EXPECT_EQ(facts[0].feedDirection, "LongEdgeFirst");
}

TEST(EffectiveTickets, NothingIsSaidWhereMergesCannotBeToldApart) {
    const std::vector<SentPart> parts{Sent(PartKind::FixedDocumentSequence, false),
                                      Sent(PartKind::FixedDocument, false), Sent(PartKind::FixedPage, true),
                                      Sent(PartKind::FixedPage, false)};
    prntvpt::ProviderReport report;
    report.calls = {Merge("page", Sheet("One")), Merge("page", Sheet("Two"))};
    EXPECT_EQ(Sheets(EffectiveTickets(parts, report, Sheet("User"))),
              (std::vector<std::string>{"unset", "User"}));
}

TEST(EffectiveTickets, NothingIsSaidWhereTheTicketsWereNotKept) {
    const std::vector<SentPart> parts{Sent(PartKind::FixedPage, true)};
    prntvpt::ProviderReport report;
    report.calls = {Merge("page", {})};
    report.calls[0].output.reset();
    EXPECT_EQ(Sheets(EffectiveTickets(parts, report, Sheet("User"))), std::vector<std::string>{"unset"});
}

TEST(EffectiveTickets, FailedMergesAndOtherCallsDoNotCount) {
    const std::vector<SentPart> parts{Sent(PartKind::FixedPage, true)};
    prntvpt::ProviderReport report;
    report.calls = {Merge("page", Sheet("Failed"), E_FAIL), Merge("page", Sheet("Good"))};
    report.calls[0].output.reset();
    prntvpt::ProviderCall capabilities = Merge("page", "");
    capabilities.function = "PTGetPrintCapabilities";
    report.calls.push_back(capabilities);
    EXPECT_EQ(Sheets(EffectiveTickets(parts, report, Sheet("User"))), std::vector<std::string>{"Good"});
}

}  // namespace
}  // namespace devkit::filterhost
