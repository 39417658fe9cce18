#include "devkit/pipeline/calllog.h"

#include <gtest/gtest.h>

namespace devkit::pipeline {
namespace {

using Lines = std::vector<std::string>;

TEST(CallLog, CountsByMethodAndInAll) {
    CallLog log;
    EXPECT_EQ(log.Enter("IA::First"), S_OK);
    EXPECT_EQ(log.Enter("IA::Second"), S_OK);
    log.Note("IA::First");
    EXPECT_EQ(log.Count("IA::First"), 2U);
    EXPECT_EQ(log.Count("IA::Second"), 1U);
    EXPECT_EQ(log.Count("IA::Third"), 0U);
    EXPECT_EQ(log.Count(""), 3U);
}

TEST(CallLog, KeepsTextOnlyWhenAsked) {
    CallLog silent;
    EXPECT_EQ(silent.Enter("IA::First"), S_OK);
    EXPECT_EQ(silent.Text(), Lines{});
    CallLog keeping({}, true);
    EXPECT_EQ(keeping.Enter("IA::First", "name"), S_OK);
    keeping.Note("IA::Second");
    EXPECT_EQ(keeping.Text(), (Lines{"IA::First name", "IA::Second"}));
}

TEST(CallLog, FailsTheNthCallOfTheMethodAlone) {
    CallLog log({{"IA::First", "", 2, E_ABORT, false}});
    EXPECT_EQ(log.Enter("IA::First"), S_OK);
    EXPECT_EQ(log.Enter("IA::Second"), S_OK);
    EXPECT_FALSE(log.AllFaultsStruck());
    EXPECT_EQ(log.Enter("IA::First"), E_ABORT);
    EXPECT_TRUE(log.AllFaultsStruck());
    EXPECT_EQ(log.Enter("IA::First"), S_OK);
}

TEST(CallLog, FailsAllLaterCallsWhenTheFaultGoesOn) {
    CallLog log({{"IA::First", "", 2, E_ABORT, true}});
    EXPECT_EQ(log.Enter("IA::First"), S_OK);
    EXPECT_EQ(log.Enter("IA::First"), E_ABORT);
    EXPECT_EQ(log.Enter("IA::First"), E_ABORT);
}

TEST(CallLog, TakesAMethodWithoutItsInterface) {
    CallLog log({{"First", "", 1, E_ABORT, true}});
    EXPECT_EQ(log.Enter("IA::First"), E_ABORT);
    EXPECT_EQ(log.Enter("IB::First"), E_ABORT);
    EXPECT_EQ(log.Enter("IA::NotFirst"), S_OK);
}

TEST(CallLog, CountsOnlyCallsWithTheFaultsArgument) {
    CallLog log({{"GetProperty", "PrinterName", 1, E_ABORT, false}});
    EXPECT_EQ(log.Enter("IBag::GetProperty", "PrinterHandle"), S_OK);
    EXPECT_EQ(log.Enter("IBag::GetProperty", "PrinterName"), E_ABORT);
}

TEST(CallLog, CountsEveryCallForAFaultWithoutMethod) {
    CallLog log({{"", "", 3, E_ABORT, false}});
    EXPECT_EQ(log.Enter("IA::First"), S_OK);
    EXPECT_EQ(log.Enter("IB::Second"), S_OK);
    EXPECT_EQ(log.Enter("IC::Third"), E_ABORT);
}

TEST(CallLog, PassesOverMethodsThatCannotFail) {
    CallLog log({{"", "", 2, E_ABORT, false}});
    EXPECT_EQ(log.Enter("IA::First"), S_OK);
    log.Note("IA::Close");
    EXPECT_EQ(log.Enter("IA::First"), E_ABORT);
}

}  // namespace
}  // namespace devkit::pipeline
