// Streams of the pipeline that give and take less than they could.

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "devkit/common/hresult.h"
#include "faultedjob.h"

namespace systemtest {
namespace {

using devkit::common::HexOf;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;

// A call of a stream that was answered with nothing.
struct EmptyAnswer {
    bool isWrite = false;
    bool isOfPage = false;
    bool isFirst = false;  // of its stream, as far as that was read or written
    std::size_t sent = 0;  // parts that had been sent before
};

constexpr std::string_view kRead = "IPrintReadStream::ReadBytes ";
constexpr std::string_view kWrite = "IPrintWriteStream::WriteBytes ";
constexpr std::string_view kSend = "IXpsDocumentConsumer::Send";

// Those from the nth call of the method on that were answered so.
std::vector<EmptyAnswer> EmptyAnswers(const RunOutcome& outcome, std::string_view method, unsigned nth,
                                      bool isForGood) {
    std::vector<EmptyAnswer> answers;
    const std::string* pBefore = nullptr;
    std::size_t sent = 0;
    for (const std::string& call : outcome.calls) {
        const bool isMeant = call.starts_with(method);
        if (isMeant && nth > 0) --nth;
        if (isMeant && nth == 0) {
            const bool isFirst = pBefore == nullptr || *pBefore != call;
            answers.push_back({method == kWrite, call.ends_with(".fpage"), isFirst, sent});
            if (!isForGood) break;
        }
        sent += call.starts_with(kSend) ? 1 : 0;
        pBefore = &call;
    }
    return answers;
}

// The code with which the job ends, S_OK when it does not. A ticket of nothing is no document; the end of a
// ticket that was read tells nothing new; what the document says of its saving is not looked at.
HRESULT CodeOf(const std::vector<EmptyAnswer>& answers) {
    for (const EmptyAnswer& answer : answers) {
        if (answer.isWrite && answer.isOfPage) return E_FAIL;
        if (!answer.isWrite && !answer.isOfPage && answer.isFirst) return E_FAIL;
    }
    // A reader of markup asks again, and gives up in the end.
    const bool isForEver = answers.size() > 1 && answers.back().isOfPage;
    return isForEver ? STG_E_READFAULT : S_OK;
}

// The parts that were sent, without the tickets that the filter has written.
std::vector<std::string> WithoutNewTickets(const JobResult& result) {
    std::vector<std::string> sent = result.sent;
    for (std::string& part : sent) {
        const std::size_t ticket = part.find("\nticket ");
        if (part.find("pagevalidator_N_", ticket) != std::string::npos) part.resize(ticket);
    }
    return sent;
}

class StreamFaultsTest : public FaultedJobTest {
  protected:
    static void ExpectEnd(const Job& job, const RunOutcome& outcome,
                          const std::vector<EmptyAnswer>& answers) {
        const JobResult result = ResultOf(outcome);
        JobResult expected = GoodResult(job);
        if (const HRESULT code = CodeOf(answers); FAILED(code)) {
            ASSERT_LE(answers.back().sent, expected.sent.size());
            expected = EndedEarly(expected, answers.back().sent, code, {code});
        }
        EXPECT_EQ(expected.result, result.result) << HexOf(result.result);
        EXPECT_EQ(expected.shutdownCodes, result.shutdownCodes);
        if (std::ranges::any_of(answers, [](const EmptyAnswer& answer) { return answer.isWrite; })) {
            EXPECT_EQ(WithoutNewTickets(expected), WithoutNewTickets(result));
        } else {
            EXPECT_EQ(expected.sent, result.sent);
        }
    }
};

TEST_F(StreamFaultsTest, StreamsThatGiveAndTakeFewBytesChangeNothing) {
    for (const Job& job : Jobs()) {
        std::size_t tried = 0;
        for (const ULONG most : {1u, 2u, 7u, 100u}) {
            SCOPED_TRACE(job.name + ", " + std::to_string(most) + " bytes a call");
            RunOptions options = OptionsOf(job);
            options.behaviour.maxBytesPerRead = most;
            options.behaviour.maxBytesPerWrite = most;
            options.behaviour.endFlag = devkit::pipeline::EndFlag::AfterLastData;
            const RunOutcome outcome = RunJob(job, std::move(options));
            EXPECT_EQ(GoodResult(job), ResultOf(outcome));
            ExpectNothingChanged(outcome);
            ++tried;
        }
        ExpectTried("every read and write of few bytes", job, tried);
    }
}

TEST_F(StreamFaultsTest, AStreamThatAnswersNothingEndsTheJobAndDoesNotHang) {
    for (const std::string_view method : {kRead, kWrite}) {
        for (const bool isForGood : {false, true}) {
            const std::string kind = std::string(method == kRead ? "reads" : "writes") +
                                     " answered with nothing " + (isForGood ? "for good" : "once");
            for (const Job& job : Jobs()) {
                unsigned nth = 1;
                for (;; ++nth) {
                    ASSERT_LT(nth, kMostCalls);
                    SCOPED_TRACE(kind + ", " + job.name + ", call " + std::to_string(nth));
                    RunOptions options = OptionsOf(job);
                    const std::string name(method.substr(0, method.size() - 1));
                    options.behaviour.faults.push_back({name, "", nth, S_FALSE, isForGood});
                    options.behaviour.keepCalls = true;
                    const RunOutcome outcome = RunJob(job, std::move(options));
                    if (!outcome.unstruckFaults.empty()) break;
                    ExpectEnd(job, outcome, EmptyAnswers(outcome, method, nth, isForGood));
                    ExpectNothingChanged(outcome);
                    ExpectGoodResult(job);
                }
                ExpectTried(kind, job, nth - 1);
            }
        }
    }
}

}  // namespace
}  // namespace systemtest
