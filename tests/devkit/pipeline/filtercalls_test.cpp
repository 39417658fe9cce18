#include "devkit/pipeline/filtercalls.h"

#include <gtest/gtest.h>

namespace devkit::pipeline {
namespace {

using Lines = std::vector<std::string>;

TEST(FilterCalls, CountsByMethodAndInAll) {
    FilterCalls log;
    EXPECT_EQ(S_OK, log.Enter("IA::First"));
    EXPECT_EQ(S_OK, log.Enter("IA::Second"));
    log.Note("IA::First");
    EXPECT_EQ(2U, log.Count("IA::First"));
    EXPECT_EQ(1U, log.Count("IA::Second"));
    EXPECT_EQ(0U, log.Count("IA::Third"));
    EXPECT_EQ(3U, log.Count(""));
}

TEST(FilterCalls, KeepsTextOnlyWhenAsked) {
    FilterCalls silent;
    EXPECT_EQ(S_OK, silent.Enter("IA::First"));
    EXPECT_EQ(Lines{}, silent.Text());
    FilterCalls keeping({}, true);
    EXPECT_EQ(S_OK, keeping.Enter("IA::First", "name"));
    keeping.Note("IA::Second");
    EXPECT_EQ((Lines{"IA::First name", "IA::Second"}), keeping.Text());
}

TEST(FilterCalls, FailsTheNthCallOfTheMethodAlone) {
    FilterCalls log({{"IA::First", "", 2, E_ABORT, false}});
    EXPECT_EQ(S_OK, log.Enter("IA::First"));
    EXPECT_EQ(S_OK, log.Enter("IA::Second"));
    EXPECT_EQ(Lines{"IA::First@2=0x80004004 E_ABORT"}, log.UnstruckFaults());
    EXPECT_EQ(E_ABORT, log.Enter("IA::First"));
    EXPECT_EQ(Lines{}, log.UnstruckFaults());
    EXPECT_EQ(S_OK, log.Enter("IA::First"));
}

TEST(FilterCalls, FailsAllLaterCallsWhenTheFaultGoesOn) {
    FilterCalls log({{"IA::First", "", 2, E_ABORT, true}});
    EXPECT_EQ(S_OK, log.Enter("IA::First"));
    EXPECT_EQ(E_ABORT, log.Enter("IA::First"));
    EXPECT_EQ(E_ABORT, log.Enter("IA::First"));
}

TEST(FilterCalls, TakesAMethodWithoutItsInterface) {
    FilterCalls log({{"First", "", 1, E_ABORT, true}});
    EXPECT_EQ(E_ABORT, log.Enter("IA::First"));
    EXPECT_EQ(E_ABORT, log.Enter("IB::First"));
    EXPECT_EQ(S_OK, log.Enter("IA::NotFirst"));
}

TEST(FilterCalls, CountsOnlyCallsWithTheFaultsArgument) {
    FilterCalls log({{"GetProperty", "PrinterName", 1, E_ABORT, false}});
    EXPECT_EQ(S_OK, log.Enter("IBag::GetProperty", "PrinterHandle"));
    EXPECT_EQ(E_ABORT, log.Enter("IBag::GetProperty", "PrinterName"));
}

TEST(FilterCalls, CountsEveryCallForAFaultWithoutMethod) {
    FilterCalls log({{"", "", 3, E_ABORT, false}});
    EXPECT_EQ(S_OK, log.Enter("IA::First"));
    EXPECT_EQ(S_OK, log.Enter("IB::Second"));
    EXPECT_EQ(E_ABORT, log.Enter("IC::Third"));
}

TEST(FilterCalls, PassesOverMethodsThatCannotFail) {
    FilterCalls log({{"", "", 2, E_ABORT, false}});
    EXPECT_EQ(S_OK, log.Enter("IA::First"));
    log.Note("IA::Close");
    EXPECT_EQ(E_ABORT, log.Enter("IA::First"));
}

TEST(FilterCalls, TellsAFaultThatHasNotStruckAsItWasPlanned) {
    const FilterCalls log({{"GetString", "KoraNsPrefix", 3, E_FAIL, true}});
    EXPECT_EQ(Lines{"GetString(KoraNsPrefix)@3+=0x80004005 E_FAIL"}, log.UnstruckFaults());
}

}  // namespace
}  // namespace devkit::pipeline
