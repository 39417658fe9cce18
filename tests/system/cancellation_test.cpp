#include "filtertest.h"

namespace systemtest {
namespace {

using devkit::pipeline::AfterCancel;
using devkit::pipeline::kJobCancelled;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;

class CancellationTest : public FilterTest {
  protected:
    // A job that is cancelled when the given part is asked for. The parts before it went through; what the
    // pipeline answers from then on is what the job ends with.
    static void Cancel(unsigned part, AfterCancel after, bool isConcurrent) {
        SCOPED_TRACE("mode " + std::to_string(static_cast<int>(after)) + ", part " + std::to_string(part));
        Configure();
        RunOptions options = Options();
        options.cancelAt = part;
        options.cancelConcurrently = isConcurrent;
        options.behaviour.afterCancel = after;
        const RunOutcome outcome = Run(std::move(options));
        EXPECT_TRUE(outcome.cancelled);
        EXPECT_EQ(S_OK, outcome.shutdownOperation);
        EXPECT_EQ(1u, outcome.finishedCount);
        EXPECT_TRUE(outcome.senderClosed);
        EXPECT_FALSE(outcome.IsWhole());
        const bool isRefused =
            after == AfterCancel::FailGetXpsPart || (after == AfterCancel::KeepGiving && part != kQuestions);
        EXPECT_EQ(isRefused ? kJobCancelled : S_OK, outcome.result);
        EXPECT_EQ(isRefused ? std::vector<HRESULT>{kJobCancelled} : std::vector<HRESULT>{},
                  outcome.shutdownCodes);
        EXPECT_EQ(part - 1, outcome.parts.size());
        ExpectNothingLeft(outcome);
    }
};

TEST_F(CancellationTest, CancellingAtEachPartFromAnotherThreadEndsTheJobEveryTimeWithoutALeak) {
    for (const AfterCancel after :
         {AfterCancel::FailGetXpsPart, AfterCancel::EndOfParts, AfterCancel::KeepGiving}) {
        for (unsigned part = 1; part <= kQuestions; ++part) Cancel(part, after, false);
    }
}

TEST_F(CancellationTest, CancellingWhileThePartIsWorkedOnEndsTheJobEveryTimeWithoutALeak) {
    for (const AfterCancel after :
         {AfterCancel::FailGetXpsPart, AfterCancel::EndOfParts, AfterCancel::KeepGiving}) {
        for (unsigned part = 1; part <= kQuestions; ++part) Cancel(part, after, true);
    }
}

}  // namespace
}  // namespace systemtest
