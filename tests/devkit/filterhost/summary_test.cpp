#include "devkit/filterhost/summary.h"

#include <gtest/gtest.h>

namespace devkit::filterhost {
namespace {

RunResult Finished() {
    RunResult result;
    result.input = "in.xps";
    result.output = "out.xps";
    result.outcome.emplace();
    result.outcome->initialized = S_OK;
    result.outcome->result = S_OK;
    result.outcome->parts.resize(4);
    PageFacts page;
    page.name = "/1.fpage";
    page.before = package::PageDimensions{816, 1056, {}, {}};
    page.after = page.before;
    result.pages.push_back(page);
    return result;
}

TEST(Summary, OfAPageThatWasLeftAlone) {
    EXPECT_EQ(
        "in.xps -> out.xps: 4 parts, 1 page, done, 0x00000000 S_OK\n"
        "  page 1 /1.fpage: 816 x 1056, feed unset, not turned, sheet unset, ticket kept\n",
        WriteSummary(Finished()));
}

TEST(Summary, OfAPageThatWasTurnedAndReticketed) {
    RunResult result = Finished();
    PageFacts& page = result.pages[0];
    page.rewritten = true;
    page.turned = true;
    page.after = package::PageDimensions{1056.25, 816, {}, {}};
    page.feedDirection = "LongEdgeFirst";
    page.mediaSize = "ISOA4";
    page.ticketReplaced = true;
    page.ticketAfter = "/a\\b.xml";
    EXPECT_EQ(
        "in.xps -> out.xps: 4 parts, 1 page, done, 0x00000000 S_OK\n"
        "  page 1 /1.fpage: 816 x 1056 -> 1056.25 x 816, feed LongEdgeFirst, turned, sheet ISOA4, new ticket "
        "/a\\b.xml\n",
        WriteSummary(result));
}

TEST(Summary, TellsWhatTheTicketProviderSaw) {
    RunResult result = Finished();
    result.pages.clear();
    result.provider.emplace();
    result.provider->counts = {{"PTMergeAndValidatePrintTicket", 2}, {"PTOpenProvider", 1}};
    result.provider->calls.resize(3);
    result.provider->calls[0].impersonating = true;
    result.provider->calls[0].expectedToken = true;
    result.provider->openHandles.resize(1);
    result.findings = {"odd"};
    EXPECT_EQ(
        "in.xps -> out.xps: 4 parts, 0 pages, done, 0x00000000 S_OK\n"
        "  print ticket provider: 3 calls (PTMergeAndValidatePrintTicket 2, PTOpenProvider 1), 1 of them as "
        "the user, 1 handle left open\n"
        "  finding: odd\n",
        WriteSummary(result));
}

TEST(Summary, TellsHowARunEnded) {
    RunResult result = Finished();
    result.pages.clear();
    result.output.reset();
    result.outcome->result = E_ABORT;
    EXPECT_EQ("in.xps -> nothing written: 4 parts, 0 pages, failed, 0x80004004 E_ABORT\n",
              WriteSummary(result));
    result.outcome->cancelled = true;
    EXPECT_EQ("in.xps -> nothing written: 4 parts, 0 pages, cancelled, 0x80004004 E_ABORT\n",
              WriteSummary(result));
    result.outcome->hung = true;
    EXPECT_EQ("in.xps -> nothing written: 4 parts, 0 pages, the filter hangs\n", WriteSummary(result));
    result.outcome.reset();
    EXPECT_EQ("in.xps -> nothing written: not run\n", WriteSummary(result));
}

TEST(Problems, AreOneLineEach) {
    RunResult result = Finished();
    EXPECT_EQ(std::vector<std::string>{}, WriteProblems(result));
    result.error = "is not a zip archive";
    result.outcome->result = E_FAIL;
    result.outcome->lastPart = "FixedPage /1.fpage";
    result.outcome->inputFailures = {"/1.fpage: damaged"};
    result.breaches = {"one", "two"};
    EXPECT_EQ(
        (std::vector<std::string>{"in.xps: is not a zip archive", "in.xps: /1.fpage: damaged",
                                  "in.xps: the filter failed with 0x80004005 E_FAIL, at FixedPage /1.fpage",
                                  "in.xps: breach: one", "in.xps: breach: two"}),
        WriteProblems(result));
}

}  // namespace
}  // namespace devkit::filterhost
