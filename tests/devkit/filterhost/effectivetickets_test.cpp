#include "devkit/filterhost/effectivetickets.h"

#include <gtest/gtest.h>

namespace devkit::filterhost {
namespace {

using printschema::TicketFacts;
using Names = std::vector<std::string>;

PartFacts PartWith(const char* kind, const char* name, bool ticket) {
    PartFacts part{kind, name, std::nullopt, std::nullopt, std::nullopt};
    if (ticket) part.ticketBefore = "/ticket.xml";
    return part;
}
PartFacts SequenceWith(bool ticket) { return PartWith("FixedDocumentSequence", "/s", ticket); }
PartFacts DocumentWith(const char* name, bool ticket) { return PartWith("FixedDocument", name, ticket); }
PartFacts PageWith(const char* name, bool ticket) { return PartWith("FixedPage", name, ticket); }

MadeCall Made(const char* part, const char* scope, const char* sheet, HRESULT result = S_OK) {
    MadeCall made;
    made.call.function = "PTMergeAndValidatePrintTicket";
    made.call.scope = scope;
    made.call.result = result;
    made.call.facts.mediaSize = sheet;
    made.part = part;
    return made;
}

RunResult Result(const std::vector<PartFacts>& parts, const std::vector<MadeCall>& calls) {
    RunResult result;
    result.parts = common::RecordList(parts);
    result.providerCalls = common::RecordList(calls);
    result.userTicket.mediaSize = "User";
    result.provider.emplace();
    return result;
}

Names Sheets(const std::vector<PartFacts>& parts, const std::vector<MadeCall>& calls) {
    Names names;
    const RunResult result = Result(parts, calls);
    const std::vector<EffectiveTicket> tickets = EffectiveTickets(result);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i].kind == "FixedPage") names.push_back(tickets.at(i).facts.mediaSize.value_or("unset"));
    }
    return names;
}

TEST(EffectiveTickets, APageHasItsOwnOrWhatHoldsAroundIt) {
    EXPECT_EQ(
        (Names{"Document", "Page", "Job"}),
        Sheets(
            {PartWith("XpsDocument", "", false), SequenceWith(true), DocumentWith("/d1", true),
             PageWith("/1", false), PageWith("/2", true), DocumentWith("/d2", false), PageWith("/3", false)},
            {Made("FixedDocumentSequence /s", "job", "Job"),
             Made("FixedDocument /d1", "document", "Document"), Made("FixedPage /2", "page", "Page")}));
}

TEST(EffectiveTickets, WithoutTicketsTheUsersHolds) {
    EXPECT_EQ(Names{"User"}, Sheets({SequenceWith(false), DocumentWith("/d", false), PageWith("/1", false)},
                                    {Made("XpsDocument", "job", "Other")}));
}

TEST(EffectiveTickets, SayNothingOfAFilterThatCallsNoProvider) {
    EXPECT_EQ(Names{"unset"},
              Sheets({SequenceWith(false), DocumentWith("/d", false), PageWith("/1", false)}, {}));
}

TEST(EffectiveTickets, AreNotKnownOfTheSystemsProvider) {
    RunResult result = Result({SequenceWith(false), DocumentWith("/d", false), PageWith("/1", false)}, {});
    result.provider.reset();
    for (const EffectiveTicket& ticket : EffectiveTickets(result)) {
        EXPECT_EQ(TicketFacts(), ticket.facts);
        EXPECT_EQ(std::nullopt, ticket.inForce);
    }
}

TEST(EffectiveTickets, BelongToTheirPartsInWhateverOrderTheyWereMade) {
    EXPECT_EQ(
        (Names{"One", "Two"}),
        Sheets({SequenceWith(false), DocumentWith("/d", false), PageWith("/1", true), PageWith("/2", true)},
               {Made("FixedPage /2", "page", "Two"), Made("FixedPage /1", "page", "One")}));
}

TEST(EffectiveTickets, WhatThePagesLeavesOutComesFromTheWiderScope) {
    MadeCall job = Made("FixedDocumentSequence /s", "job", "Job");
    job.call.facts.feedDirection = "LongEdgeFirst";
    const RunResult result = Result({SequenceWith(true), DocumentWith("/d", false), PageWith("/1", true)},
                                    {job, Made("FixedPage /1", "page", "Page")});
    const std::vector<EffectiveTicket> tickets = EffectiveTickets(result);
    ASSERT_EQ(3U, tickets.size());
    EXPECT_EQ("Page", tickets[2].facts.mediaSize);
    EXPECT_EQ("LongEdgeFirst", tickets[2].facts.feedDirection);
}

TEST(EffectiveTickets, NameTheTextThatHoldsAndTheCallThatMadeIt) {
    constexpr TextId kUsers = 0;
    constexpr TextId kJobs = 1;
    constexpr TextId kPages = 2;
    constexpr TextId kAsked = 3;
    MadeCall job = Made("FixedDocumentSequence /s", "job", "Job");
    job.output = kJobs;
    MadeCall page = Made("FixedPage /2", "page", "Page");
    page.delta = kAsked;
    page.output = kPages;
    const std::vector<PartFacts> pages = {DocumentWith("/d", false), PageWith("/1", false),
                                          PageWith("/2", true), PageWith("/3", true)};
    std::vector<PartFacts> parts = {PartWith("XpsDocument", "", false), SequenceWith(true)};
    parts.insert(parts.end(), pages.begin(), pages.end());
    RunResult result = Result(parts, {job, page});
    result.userTicketText = kUsers;
    const std::vector<EffectiveTicket> tickets = EffectiveTickets(result);
    ASSERT_EQ(6U, tickets.size());
    ASSERT_TRUE(tickets[1].made);
    EXPECT_EQ(std::nullopt, tickets[1].made->asked);
    EXPECT_EQ(kJobs, tickets[1].made->made);
    EXPECT_EQ(kJobs, tickets[1].inForce);
    EXPECT_FALSE(tickets[3].made);
    EXPECT_EQ(kJobs, tickets[3].inForce);
    ASSERT_TRUE(tickets[4].made);
    EXPECT_EQ(kAsked, tickets[4].made->asked);
    EXPECT_EQ(kPages, tickets[4].made->made);
    EXPECT_EQ(kPages, tickets[4].inForce);
    // It has a ticket, and none was made of it.
    EXPECT_EQ(std::nullopt, tickets[5].inForce);
    result.parts = common::RecordList(pages);
    EXPECT_EQ(kUsers, EffectiveTickets(result).at(1).inForce);
}

TEST(EffectiveTickets, NothingIsSaidWhereNoneOrSeveralWereMadeForAPartWithATicket) {
    EXPECT_EQ((Names{"unset", "unset", "User"}),
              Sheets({SequenceWith(false), DocumentWith("/d", false), PageWith("/1", true),
                      PageWith("/2", true), PageWith("/3", false)},
                     {Made("FixedPage /1", "page", "One"), Made("FixedPage /1", "page", "Two"),
                      Made("FixedPage /2", "job", "Other scope")}));
}

TEST(EffectiveTickets, FailedMergesAndOtherCallsDoNotCount) {
    MadeCall capabilities = Made("FixedPage /1", "page", "Capabilities");
    capabilities.call.function = "PTGetPrintCapabilities";
    EXPECT_EQ(Names{"Good"},
              Sheets({PageWith("/1", true)}, {Made("FixedPage /1", "page", "Failed", E_FAIL), capabilities,
                                              Made("FixedPage /1", "page", "Good")}));
}

}  // namespace
}  // namespace devkit::filterhost
