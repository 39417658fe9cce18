#include "devkit/filterhost/summary.h"

#include <gtest/gtest.h>

namespace devkit::filterhost {
namespace {

using Lines = std::vector<std::string>;

// The list with what `change` does to its elements.
template <typename Element, typename Change>
void ChangeAll(common::RecordList<Element>& list, Change&& change) {
    std::vector<Element> elements;
    for (const Element& each : list) elements.push_back(each);
    change(elements);
    list = common::RecordList<Element>(std::move(elements));
}
template <typename Change>
void ChangeLastPart(RunResult& result, Change&& change) {
    ChangeAll(result.parts, [&](std::vector<PartFacts>& parts) { change(parts.back()); });
}

MadeCall CallOf(const char* function) {
    MadeCall made;
    made.call.function = function;
    return made;
}

// A run over a document of four parts that passed on all of them.
RunResult Finished() {
    RunResult result;
    result.input = "in.xps";
    result.output = "out.xps";
    result.inputParts = 4;
    result.end.emplace();
    result.end->initialized = S_OK;
    result.end->result = S_OK;
    for (const char* const title :
         {"XpsDocument", "FixedDocumentSequence /s", "FixedDocument /d", "FixedPage /1.fpage"}) {
        const std::string text = title;
        const std::size_t space = text.find(' ');
        PartFacts part;
        part.kind = text.substr(0, space);
        if (space != std::string::npos) part.name = text.substr(space + 1);
        result.parts.push_back(std::move(part));
        result.given.push_back(text);
    }
    ChangeLastPart(result, [](PartFacts& part) {
        PageFacts& page = part.page.emplace();
        page.before = PageSize{816, 1056};
        page.after = page.before;
    });
    return result;
}

TEST(Summary, OfAPageThatWasLeftAlone) {
    EXPECT_EQ(
        "in.xps -> out.xps: 4 parts, 1 page, done, 0x00000000 S_OK\n"
        "  page 1 /1.fpage: 816 x 1056\n",
        WriteSummary(Finished()));
}

// What is told of the page of a run.
std::string PageText(const PageFacts& page, const printschema::TicketFacts& effective = {}) {
    PartFacts part{"FixedPage", "/1.fpage"};
    part.ticketBefore = "/ticket.xml";
    part.page = page;
    return DecisionText(part, effective);
}

TEST(Summary, FeedSheetAndTurnAreToldWhereTicketsShowThem) {
    PageFacts page;
    page.before = page.after = PageSize{816, 1056};
    EXPECT_EQ("816 x 1056, ticket kept", PageText(page));
    EXPECT_EQ("816 x 1056, not turned, sheet ISOA4, ticket kept", PageText(page, {"ISOA4", std::nullopt}));
    EXPECT_EQ("816 x 1056, feed LongEdgeFirst, not turned, ticket kept",
              PageText(page, {std::nullopt, "LongEdgeFirst"}));
    page.rewritten = true;
    EXPECT_EQ("816 x 1056 -> 816 x 1056, rewritten, ticket kept", PageText(page));
    EXPECT_EQ("816 x 1056 -> 816 x 1056, rewritten, not turned, sheet ISOA4, ticket kept",
              PageText(page, {"ISOA4", std::nullopt}));
    page.turned = true;
    EXPECT_EQ("816 x 1056 -> 816 x 1056, rewritten, ticket kept", PageText(page));
    EXPECT_EQ("816 x 1056 -> 816 x 1056, turned, sheet ISOA4, ticket kept",
              PageText(page, {"ISOA4", std::nullopt}));
}

TEST(Summary, APageThatTheFilterMadeHasOneSize) {
    PageFacts page;
    page.after = PageSize{816, 1056};
    EXPECT_EQ("816 x 1056, ticket kept", PageText(page));
}

TEST(Summary, OfAPageThatWasTurnedAndReticketed) {
    RunResult result = Finished();
    result.userTicket = {"Unused", "LongEdgeFirst"};
    result.provider.emplace();
    result.providerCalls.push_back(CallOf("PTOpenProvider"));
    ChangeLastPart(result, [](PartFacts& part) {
        PageFacts& page = *part.page;
        page.rewritten = true;
        page.turned = true;
        page.after = PageSize{1056.25, 816};
        page.newTicket.mediaSize = "ISOA4";
        page.ticketReplaced = true;
        part.ticketAfter = "/a\\b.xml";
    });
    EXPECT_EQ(
        "in.xps -> out.xps: 4 parts, 1 page, done, 0x00000000 S_OK\n"
        "  page 1 /1.fpage: 816 x 1056 -> 1056.25 x 816, feed LongEdgeFirst, turned, sheet ISOA4, new ticket "
        "/a\\b.xml\n"
        "  print ticket provider: 1 call (PTOpenProvider 1), 0 of them as the user, 0 handles left open\n",
        WriteSummary(result));
}

TEST(Summary, TellsWhatTheTicketProviderSaw) {
    RunResult result = Finished();
    ChangeLastPart(result, [](PartFacts& part) { part.page.reset(); });
    result.provider.emplace();
    MadeCall asUser = CallOf("PTMergeAndValidatePrintTicket");
    asUser.call.impersonating = true;
    asUser.call.expectedToken = true;
    result.providerCalls.push_back(asUser);
    result.providerCalls.push_back(CallOf("PTOpenProvider"));
    result.providerCalls.push_back(CallOf("PTMergeAndValidatePrintTicket"));
    result.provider->openHandles.resize(1);
    result.findings = {{"document", "odd"}};
    EXPECT_EQ(
        "in.xps -> out.xps: 4 parts, 1 page, done, 0x00000000 S_OK\n"
        "  print ticket provider: 3 calls (PTMergeAndValidatePrintTicket 2, PTOpenProvider 1), 1 of them as "
        "the user, 1 handle left open\n"
        "  finding: odd\n",
        WriteSummary(result));
}

TEST(Summary, EndsWithWhereTheTimeWent) {
    RunResult result = Finished();
    ChangeLastPart(result, [](PartFacts& part) { part.page.reset(); });
    result.findings = {{"document", "odd"}};
    result.times = RunTimes{2.5, 2.0, {{"1 (a.dll)", 0.75, 0.5, 0.25, 0.5}}};
    const std::string start =
        "in.xps -> out.xps: 4 parts, 1 page, done, 0x00000000 S_OK\n"
        "  finding: odd\n";
    EXPECT_EQ(
        start +
            "  time: 2.500 s; the filter 0.750 s, the print ticket provider 0.500 s, the pipeline 0.250 s, "
            "the rest 1.000 s\n",
        WriteSummary(result));
    result.times->filters.front().ticketProvider.reset();
    EXPECT_EQ(start + "  time: 2.500 s; the filter 0.750 s, the pipeline 0.250 s, the rest 1.000 s\n",
              WriteSummary(result));
    result.times->filters.push_back({"2 (b.dll)", 1, std::nullopt, 1, 0});
    EXPECT_EQ(start +
                  "  time: 2.500 s; 1 (a.dll) 0.750 s, the pipeline 0.250 s; 2 (b.dll) 1.000 s, the pipeline "
                  "1.000 s; the rest 0.500 s\n",
              WriteSummary(result));
}

TEST(Summary, TellsHowARunEnded) {
    RunResult result = Finished();
    ChangeAll(result.parts, [](std::vector<PartFacts>& parts) { parts.pop_back(); });
    result.output.reset();
    result.end->result = E_ABORT;
    EXPECT_EQ("in.xps -> nothing written: 3 parts, 0 pages, failed, 0x80004004 E_ABORT\n",
              WriteSummary(result));
    result.end->cancelled = true;
    EXPECT_EQ("in.xps -> nothing written: 3 parts, 0 pages, cancelled, 0x80004004 E_ABORT\n",
              WriteSummary(result));
    result.end->hung = true;
    EXPECT_EQ("in.xps -> nothing written: 3 parts, 0 pages, the filter hangs\n", WriteSummary(result));
    result.end.reset();
    EXPECT_EQ("in.xps -> nothing written: not run\n", WriteSummary(result));
    RunResult damaged = Finished();
    damaged.inputFailures = {"/1.fpage is damaged"};
    EXPECT_TRUE(
        WriteSummary(damaged).starts_with("in.xps -> out.xps: 4 parts, 1 page, the input is damaged\n"));
    result.crash.emplace();
    EXPECT_EQ("in.xps -> nothing written: 3 parts, 0 pages, the filter did not come to its end\n",
              WriteSummary(result));
}

// The line about the parts, empty when there is none.
std::string PartsLine(const RunResult& result) {
    const std::string text = WriteSummary(result);
    const std::size_t start = text.find("  of ");
    return start == std::string::npos ? "" : text.substr(start, text.find('\n', start) - start);
}

TEST(Summary, TellsWhatBecameOfTheParts) {
    EXPECT_EQ("", PartsLine(Finished()));
    RunResult ended = Finished();
    ended.given.push_back("the end of the parts");
    EXPECT_EQ("", PartsLine(ended));

    RunResult lazy = Finished();
    ChangeAll(lazy.given, [](Lines& given) { given.pop_back(); });
    ChangeAll(lazy.parts, [](std::vector<PartFacts>& parts) { parts.pop_back(); });
    EXPECT_EQ("  of 4 parts the filter read 3 and sent 3", PartsLine(lazy));

    RunResult dropped = Finished();
    ChangeAll(dropped.parts, [](std::vector<PartFacts>& parts) { parts.pop_back(); });
    EXPECT_EQ("  of 4 parts the filter read 4 and sent 3; dropped: FixedPage /1.fpage", PartsLine(dropped));

    RunResult added = Finished();
    for (int i = 0; i < 7; ++i) added.parts.push_back({"Unknown", std::to_string(i)});
    EXPECT_EQ(
        "  of 4 parts the filter read 4 and sent 11; added: Unknown 0, Unknown 1, Unknown 2, Unknown 3, "
        "Unknown 4 and 2 more",
        PartsLine(added));

    RunResult swapped = Finished();
    ChangeAll(swapped.parts, [](std::vector<PartFacts>& parts) { std::swap(parts[1], parts[2]); });
    EXPECT_EQ(
        "  of 4 parts the filter read 4 and sent 4; in another order: FixedDocument /d before "
        "FixedDocumentSequence /s",
        PartsLine(swapped));

    swapped.end->result = E_FAIL;
    EXPECT_EQ("", PartsLine(swapped));
}

TEST(Problems, AreOneLineEach) {
    RunResult result = Finished();
    EXPECT_EQ(Lines{}, WriteProblems(result));
    result.errors = {"is not a zip archive"};
    result.end->result = E_FAIL;
    result.inputFailures = {"/1.fpage: damaged"};
    result.breaches = {{"leak", "one"}, {"kind", "two"}};
    EXPECT_EQ((Lines{"in.xps: is not a zip archive", "in.xps: /1.fpage: damaged",
                     "in.xps: the filter failed with 0x80004005 E_FAIL, at FixedPage /1.fpage",
                     "in.xps: breach: one", "in.xps: breach: two"}),
              WriteProblems(result));
}

TEST(Problems, OfACrashNameCallAndPart) {
    RunResult result = Finished();
    result.end.reset();
    result.crash = Crash{3, "the filter called abort", "", ""};
    result.underWay = {"StartOperation"};
    EXPECT_EQ(Lines{"in.xps: the filter called abort, in StartOperation, at FixedPage /1.fpage"},
              WriteProblems(result));
    result.given = {};
    result.underWay.clear();
    result.crash->type = "St13runtime_error";
    result.crash->what = "no paper";
    EXPECT_EQ(
        Lines{"in.xps: the filter called abort; the last exception that it threw is std::runtime_error (no "
              "paper), before any part"},
        WriteProblems(result));
}

TEST(Problems, OfAnEndedThreadNameTheCall) {
    RunResult result = Finished();
    result.end->result = E_UNEXPECTED;
    result.end->threadEnded = true;
    result.underWay = {"StartOperation"};
    EXPECT_EQ(Lines{"in.xps: the filter ended its thread, in StartOperation, at FixedPage /1.fpage"},
              WriteProblems(result));
}

TEST(Problems, ARequestedShutdownAfterSuccessIsOne) {
    RunResult result = Finished();
    result.end->shutdownCodes = {S_OK, E_ABORT};
    EXPECT_EQ(Lines{"in.xps: the filter succeeded, but called RequestShutdown with 0x80004004 E_ABORT"},
              WriteProblems(result));
}

}  // namespace
}  // namespace devkit::filterhost
