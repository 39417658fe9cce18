#include "devkit/filterhost/effectivetickets.h"

#include <gtest/gtest.h>

#include <memory>

namespace devkit::filterhost {
namespace {

using pipeline::Part;
using pipeline::PartKind;
using pipeline::SentPart;
using printschema::TicketFacts;

const TicketFacts kUser{"User", std::nullopt};

SentPart Sent(PartKind kind, const char* name, bool ticket) {
    SentPart sent{kind, name, std::make_shared<Part>(kind, name)};
    if (ticket) sent.part->inputTicket = std::make_shared<Part>(PartKind::PrintTicket, "/ticket.xml");
    return sent;
}
SentPart Sequence(bool ticket) { return Sent(PartKind::FixedDocumentSequence, "/s", ticket); }
SentPart Document(const char* name, bool ticket) { return Sent(PartKind::FixedDocument, name, ticket); }
SentPart Page(const char* name, bool ticket) { return Sent(PartKind::FixedPage, name, ticket); }

MadeTicket Made(const char* part, const char* scope, const char* sheet) {
    return {part, scope, {sheet, std::nullopt}};
}

std::vector<std::string> Sheets(const std::vector<SentPart>& parts, const std::vector<MadeTicket>& tickets) {
    std::vector<std::string> names;
    for (const TicketFacts& each : EffectiveTickets(parts, tickets, kUser)) {
        names.push_back(each.mediaSize.value_or("unset"));
    }
    return names;
}

using Names = std::vector<std::string>;

TEST(EffectiveTickets, APageHasItsOwnOrWhatHoldsAroundIt) {
    const std::vector<SentPart> parts{Sent(PartKind::XpsDocument, "", false),
                                      Sequence(true),
                                      Document("/d1", true),
                                      Page("/1", false),
                                      Page("/2", true),
                                      Document("/d2", false),
                                      Page("/3", false)};
    EXPECT_EQ((Names{"Document", "Page", "Job"}),
              Sheets(parts, {Made("FixedDocumentSequence /s", "job", "Job"),
                             Made("FixedDocument /d1", "document", "Document"),
                             Made("FixedPage /2", "page", "Page")}));
}

TEST(EffectiveTickets, WithoutTicketsTheUsersHolds) {
    EXPECT_EQ(Names{"User"}, Sheets({Sequence(false), Document("/d", false), Page("/1", false)}, {}));
}

TEST(EffectiveTickets, BelongToTheirPartsInWhateverOrderTheyWereMade) {
    EXPECT_EQ((Names{"One", "Two"}),
              Sheets({Sequence(false), Document("/d", false), Page("/1", true), Page("/2", true)},
                     {Made("FixedPage /2", "page", "Two"), Made("FixedPage /1", "page", "One")}));
}

TEST(EffectiveTickets, WhatThePagesLeavesOutComesFromTheWiderScope) {
    const std::vector<SentPart> parts{Sequence(true), Document("/d", false), Page("/1", true)};
    const std::vector<TicketFacts> facts =
        EffectiveTickets(parts,
                         {{"FixedDocumentSequence /s", "job", {"Job", "LongEdgeFirst"}},
                          {"FixedPage /1", "page", {"Page", std::nullopt}}},
                         kUser);
    ASSERT_EQ(1U, facts.size());
    EXPECT_EQ("Page", facts[0].mediaSize);
    EXPECT_EQ("LongEdgeFirst", facts[0].feedDirection);
}

TEST(EffectiveTickets, NothingIsSaidWhereNoneOrSeveralWereMadeForAPartWithATicket) {
    const std::vector<SentPart> parts{Sequence(false), Document("/d", false), Page("/1", true),
                                      Page("/2", true), Page("/3", false)};
    EXPECT_EQ((Names{"unset", "unset", "User"}),
              Sheets(parts, {Made("FixedPage /1", "page", "One"), Made("FixedPage /1", "page", "Two"),
                             Made("FixedPage /2", "job", "Other scope")}));
}

TEST(MadeTickets, AreOfMergesThatSucceeded) {
    MadeTickets made;
    prntvpt::ProviderCall call;
    call.function = "PTMergeAndValidatePrintTicket";
    call.scope = "page";
    call.facts.mediaSize = "Good";
    made.Add(call, "FixedPage /1");
    call.result = E_FAIL;
    made.Add(call, "FixedPage /2");
    call.result = S_OK;
    call.function = "PTGetPrintCapabilities";
    made.Add(call, "FixedPage /3");
    const std::vector<MadeTicket> tickets = made.Take();
    ASSERT_EQ(1U, tickets.size());
    EXPECT_EQ("FixedPage /1", tickets[0].part);
    EXPECT_EQ("page", tickets[0].scope);
    EXPECT_EQ("Good", tickets[0].facts.mediaSize);
}

}  // namespace
}  // namespace devkit::filterhost
