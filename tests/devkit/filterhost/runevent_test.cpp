#include "devkit/filterhost/runevent.h"

#include <gtest/gtest.h>

namespace devkit::filterhost {
namespace {

using Problems = std::vector<Problem>;

// As it comes out of the pipe to the parent.
void Tell(const Event& event, RunResult& result) { Apply(ReadEvent(WriteEvent(event)), result); }

events::ProviderCalled Call(const char* function, HRESULT code) {
    MadeCall made;
    made.call.function = function;
    made.call.result = code;
    made.part = "FixedPage /1.fpage";
    return {made};
}

TEST(RunEvents, ABreachIsToldWithWhatTheFilterWasAt) {
    RunResult result;
    const std::string text = "the pipeline thread could not be set up: no memory";
    Tell(events::Breached{"thread-setup", text}, result);
    Tell(events::CallBegun{"StartOperation"}, result);
    Tell(events::PartGiven{"FixedPage /1.fpage"}, result);
    Tell(events::Breached{"sender-once", "twice"}, result);
    Tell(events::CallEnded{"StartOperation"}, result);
    Tell(events::Found{"unused-part", "odd"}, result);
    EXPECT_EQ((Problems{{"thread-setup", text, "", ""},
                        {"sender-once", "twice", "FixedPage /1.fpage", "StartOperation"}}),
              result.breaches);
    EXPECT_EQ((Problems{{"unused-part", "odd", "FixedPage /1.fpage", ""}}), result.findings);
}

TEST(RunEvents, TextsOfTicketsAreKeptOnce) {
    RunResult result;
    events::Opened opened;
    opened.userTicketText = "user";
    opened.findings = {"/x.png is missing, /1.fpage"};
    Tell(opened, result);
    events::ProviderCalled call = Call("PTMergeAndValidatePrintTicket", S_OK);
    call.made.call.base = "user";
    call.made.call.delta = "own";
    call.made.call.output = "made";
    Tell(call, result);
    PartFacts part;
    part.kind = "FixedPage";
    Tell(events::PartSent{part, {"own", "new"}}, result);
    EXPECT_EQ((std::deque<std::string>{"user", "own", "made", "new"}), result.texts.All());
    EXPECT_EQ(0U, result.userTicketText);
    EXPECT_EQ((Problems{{"document", "/x.png is missing, /1.fpage", "", ""}}), result.findings);
    ASSERT_EQ(1U, result.providerCalls.size());
    const MadeCall& made = result.providerCalls.back();
    EXPECT_EQ(0U, made.base);
    EXPECT_EQ(1U, made.delta);
    EXPECT_EQ(2U, made.output);
    EXPECT_EQ(std::nullopt, made.call.base);
    ASSERT_EQ(1U, result.parts.size());
    EXPECT_EQ(1U, result.parts.back().ownTicket);
    EXPECT_EQ(3U, result.parts.back().newTicket);
}

// The event after its part in question has been a record.
template <typename Value>
Value ThroughARecord(const Value& value) {
    std::string bytes;
    common::RecordWriter write(bytes);
    write(value);
    common::RecordReader read(bytes);
    Value copy;
    read(copy);
    EXPECT_EQ("", read.Rest());
    return copy;
}

// An event tells of all fields; here none may be as it is by itself, or its loss would not show.
void ExpectAllSet(const std::string& event) {
    for (const char* nothing : {"null", "false", "\x22\x22", ":0,", ":0}", ":0.0"})
        EXPECT_EQ(std::string::npos, event.find(nothing)) << event;
}

TEST(RunEvents, OfACallAndAPartNothingIsLostInARecord) {
    prntvpt::ProviderCall call = Call("PTMergeAndValidatePrintTicket", E_FAIL).made.call;
    call.sequence = 1;
    call.handle = 2;
    call.scope = "page";
    call.thread = 3;
    call.impersonating = true;
    call.expectedToken = true;
    call.base = "base";
    call.delta = "delta";
    call.output = "output";
    call.facts = {"ISOA4", "LongEdgeFirst"};
    call.error = "error";
    call.twoPrefixes = "two";
    call.start = std::chrono::nanoseconds(4);
    call.inStreams = std::chrono::nanoseconds(5);
    call.own = std::chrono::nanoseconds(6);
    MadeCall made{call, "FixedPage /1.fpage", 7, 8, 9};
    const std::string told = WriteEvent(events::ProviderCalled{made});
    ExpectAllSet(told);
    const MadeCall madeCopy = ThroughARecord(made);
    EXPECT_EQ(told, WriteEvent(events::ProviderCalled{madeCopy}));
    EXPECT_EQ(7U, madeCopy.base);
    EXPECT_EQ(8U, madeCopy.delta);
    EXPECT_EQ(9U, madeCopy.output);

    PartFacts part{"FixedPage", "/1.fpage", "/before.xml", "/after.xml", 1, 2, PageFacts()};
    part.page =
        PageFacts{PageSize{1, 2}, PageSize{3, 4}, 5, 6, true, true, true, {"ISOA4", "ShortEdgeFirst"}, "why"};
    const std::string sent = WriteEvent(events::PartSent{part, {"own", "new"}});
    ExpectAllSet(sent);
    const PartFacts partCopy = ThroughARecord(part);
    EXPECT_EQ(sent, WriteEvent(events::PartSent{partCopy, {"own", "new"}}));
    EXPECT_EQ(1U, partCopy.ownTicket);
    EXPECT_EQ(2U, partCopy.newTicket);
}

TEST(Conclusion, WhatTheProviderSawHasItsIds) {
    RunResult result;
    Tell(Call("PTOpenProvider", S_OK), result);
    Tell(Call("PTGetPrintCapabilities", E_FAIL), result);
    result.provider.emplace();
    result.provider->breaches = {{"A00E", "PTCloseProvider: the handle 1 is closed"},
                                 {"A00F", "PTCloseProvider: the handle 2 was never given out"},
                                 {"A010", "PTGetPrintCapabilities: the handle 3 belongs to thread 4"},
                                 {"A011", "PTCloseProvider: the handle 3 belongs to thread 4"},
                                 {"A012", "the handle 5 of the printer P was never closed"}};
    result.provider->notes = {"a call without the expected token"};
    Conclude(result);
    EXPECT_EQ(
        (Problems{
            {"A00E", "print ticket provider: A00E PTCloseProvider: the handle 1 is closed", "", ""},
            {"A00F", "print ticket provider: A00F PTCloseProvider: the handle 2 was never given out", "", ""},
            {"A010", "print ticket provider: A010 PTGetPrintCapabilities: the handle 3 belongs to thread 4",
             "", ""},
            {"A011", "print ticket provider: A011 PTCloseProvider: the handle 3 belongs to thread 4", "", ""},
            {"A012", "print ticket provider: A012 the handle 5 of the printer P was never closed", "", ""}}),
        result.breaches);
    EXPECT_EQ(
        (Problems{
            {"provider-failure", "print ticket provider: PTGetPrintCapabilities answered 0x80004005 E_FAIL",
             "FixedPage /1.fpage", "PTGetPrintCapabilities"},
            {"provider-note", "print ticket provider: a call without the expected token", "", ""}}),
        result.findings);
    EXPECT_EQ(RuleBroken, result.status);
}

TEST(Conclusion, ANameUnderTwoPrefixesIsToldOnceWithTheFirstCallThatHasIt) {
    RunResult result;
    for (const char* const scope : {"document", "page"}) {
        events::ProviderCalled call = Call("PTMergeAndValidatePrintTicket", S_OK);
        call.made.call.scope = scope;
        call.made.call.twoPrefixes = "PageX twice, as psk:PageX and ns0:PageX: two prefixes of one namespace";
        Tell(call, result);
    }
    Conclude(result);
    EXPECT_EQ((Problems{{"ticket-two-prefixes",
                         "the print ticket that PTMergeAndValidatePrintTicket (document) was given to start "
                         "from has PageX twice, as psk:PageX and ns0:PageX: two prefixes of one namespace",
                         "FixedPage /1.fpage", "PTMergeAndValidatePrintTicket"}}),
              result.findings);
}

TEST(Conclusion, AFindingIsAFailureOnlyForTheStrict) {
    const auto status = [](bool strict) {
        RunResult result;
        result.findings = {{"foreign-output", "something else than the host wrote to the host's pipe"}};
        Conclude(result, strict);
        return result.status;
    };
    EXPECT_EQ(Done, status(false));
    EXPECT_EQ(RuleBroken, status(true));
    RunResult fine;
    Conclude(fine, true);
    EXPECT_EQ(Done, fine.status);
}

}  // namespace
}  // namespace devkit::filterhost
