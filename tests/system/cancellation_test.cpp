#include "filtertest.h"

namespace systemtest {
namespace {

using devkit::pipeline::AfterCancel;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;

class CancellationTest : public FilterTest {};

constexpr unsigned kQuestions = 16;

TEST_F(CancellationTest, CancellingAtEachPartFromAnotherThreadEndsTheJobEveryTimeWithoutALeak) {
    for (const AfterCancel after :
         {AfterCancel::FailGetXpsPart, AfterCancel::EndOfParts, AfterCancel::KeepGiving}) {
        for (unsigned part = 1; part <= kQuestions; ++part) {
            SCOPED_TRACE("mode " + std::to_string(static_cast<int>(after)) + ", part " +
                         std::to_string(part));
            Configure();
            RunOptions options = Options();
            options.cancelAt = part;
            options.behaviour.afterCancel = after;
            const RunOutcome outcome = Run(std::move(options));
            EXPECT_TRUE(outcome.cancelled);
            EXPECT_EQ(S_OK, outcome.shutdownOperation);
            EXPECT_EQ(1u, outcome.finishedCount);
            ExpectNothingLeft(outcome);
        }
    }
}

TEST_F(CancellationTest, CancellingWhileThePartIsWorkedOnEndsTheJobEveryTimeWithoutALeak) {
    for (unsigned part = 1; part <= kQuestions; ++part) {
        SCOPED_TRACE(part);
        Configure();
        RunOptions options = Options();
        options.cancelAt = part;
        options.cancelConcurrently = true;
        ExpectNothingLeft(Run(std::move(options)));
    }
}

}  // namespace
}  // namespace systemtest
