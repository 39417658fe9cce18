#include "devkit/validate/judging.h"

#include <gtest/gtest.h>

#include "devkit/validate/verdict.h"

namespace devkit::validate {
namespace {

using Strings = std::vector<std::string>;

TEST(Judging, WhatAListHasBeyondAnotherCountsEachTime) {
    EXPECT_EQ((Strings{"b", "a"}), Beyond({"a", "b", "a"}, {"a"}));
    EXPECT_EQ(Strings{}, Beyond({"a"}, {"a", "b"}));
}

RunResult Sent(const std::string& name, bool rewritten, bool newTicket) {
    RunResult result;
    filterhost::PartFacts page{"FixedPage", name};
    page.page.emplace();
    page.page->after = filterhost::PageSize{816, 1056};
    page.page->rewritten = rewritten;
    if (newTicket) page.ticketAfter = "/new.xml";
    result.parts.push_back(std::move(page));
    return result;
}

TEST(Judging, TwoRunsThatDidTheSameDoNotDiffer) {
    EXPECT_EQ(std::nullopt, DifferenceFrom(Sent("/1.fpage", true, true), Sent("/1.fpage", true, true)));
}

TEST(Judging, WhatWasDoneToAPartOtherwiseIsTold) {
    EXPECT_EQ(
        "what is sent is FixedPage /1.fpage, 816 x 1056, new ticket instead of FixedPage /1.fpage, 816 x "
        "1056, rewritten",
        DifferenceFrom(Sent("/1.fpage", true, false), Sent("/1.fpage", false, true)));
    EXPECT_EQ("the filter sent 0 parts instead of 1",
              DifferenceFrom(Sent("/1.fpage", false, false), RunResult()));
}

TEST(Judging, ARunIsToldByWhatSetsItApart) {
    filterhost::HostSettings users;
    users.pipelineSwitches = {"short-reads=9"};
    Order order{users, {{}, "a.xps", std::nullopt, {}}};
    EXPECT_EQ("a.xps", OptionsOf(order, users));
    order.host.device = "longedge";
    order.host.driverProperties = false;
    order.host.pipelineSwitches.emplace_back("apartment=single");
    order.host.providerSwitches.emplace_back("order=input");
    order.host.cancelAt = 3;
    EXPECT_EQ(
        "a.xps --device longedge --no-driver-properties --provider order=input --pipeline apartment=single "
        "--cancel-at 3",
        OptionsOf(order, users));
    order.probe = "identity";
    EXPECT_TRUE(OptionsOf(order, users).starts_with("identity "));
}

TEST(Verdict, IsNothingWhereNoTestCameToItsEnd) {
    TestResult result;
    Tally tally;
    EXPECT_EQ(filterhost::WrongUsage, tally.Status());
    result.verdict = Verdict::Skipped;
    tally.Add(result);
    EXPECT_EQ(filterhost::WrongUsage, tally.Status());
    result.verdict = Verdict::Passed;
    tally.Add(result);
    EXPECT_EQ(filterhost::Done, tally.Status());
    EXPECT_EQ("a.dll is fit at level 3: 1 passed, 1 skipped", WriteVerdict("a.dll", tally, 3));
    result.verdict = Verdict::Failed;
    tally.Add(result);
    EXPECT_EQ(filterhost::FilterFailed, tally.Status());
    EXPECT_EQ("a.dll is not fit at level 3: 1 test failed, 1 passed, 1 skipped",
              WriteVerdict("a.dll", tally, 3));
}

}  // namespace
}  // namespace devkit::validate
