#include <string>
#include <utility>

#include "devkit/common/hresult.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/judging.h"

namespace devkit::validate {
namespace {

// What is wrong with the end of a cancelled run beside the rules that it broke.
void JudgeEnd(Trial& trial, const Order& order, const RunResult& result, bool mustFail) {
    FailWithBreaches(trial, order, result);
    if (result.crash || !result.end || result.end->hung || result.end->threadEnded) {
        for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
        return;
    }
    for (const filterhost::FilterEnd& filter : result.end->filters) {
        if (filter.shutdownOperation && FAILED(*filter.shutdownOperation)) {
            trial.Fail(order, result,
                       "ShutdownOperation answers " + common::Describe(*filter.shutdownOperation));
        }
    }
    if (mustFail && SUCCEEDED(result.end->result))
        trial.Fail(order, result, "StartOperation succeeds, though it was refused a part");
}

// A test that cancels the job at each part, with the switches; after which the filter must fail where it is
// refused a part.
std::function<void(Trial&)> CancelledAtEachPart(std::vector<std::string> switches, bool mustFail) {
    return [switches = std::move(switches), mustFail](Trial& trial) {
        for (const Document& document : trial.Documents({kShort})) {
            const RunResult& plain = trial.Plain(document).result;
            if (plain.asked == 0) throw Skipped("the filter asks for no part of " + document.name);
            for (const unsigned part : trial.Choose(plain.asked)) {
                Order order = trial.OrderFor(document);
                order.host.cancelAt = part;
                order.host.pipelineSwitches.insert(order.host.pipelineSwitches.end(), switches.begin(),
                                                   switches.end());
                const RunResult result = trial.Run(order);
                if (!IsIdle(result)) JudgeEnd(trial, order, result, mustFail);
            }
        }
    };
}

constexpr std::string_view kCancellingAdvice =
    "set a flag in ShutdownOperation, return at once, and look at the flag between parts";

}  // namespace

std::vector<Test> CancellingTests() {
    return {
        {"cancelled", 6, "a job that is cancelled at any part ends, and leaves nothing behind",
         kCancellingAdvice, CancelledAtEachPart({}, true)},
        {"cancelled-parts-end", 6, "a cancelled job may look as if the document had ended", kCancellingAdvice,
         CancelledAtEachPart({"after-cancel=end"}, false)},
        {"cancelled-parts-go-on", 6, "parts may keep coming after a cancellation, and sending them fail",
         kCancellingAdvice, CancelledAtEachPart({"after-cancel=continue"}, false)},
        {"cancelled-meanwhile", 6, "ShutdownOperation may come while StartOperation is at work",
         kCancellingAdvice, CancelledAtEachPart({"cancel=concurrent"}, true)},
        {"cancelled-twice", 6, "ShutdownOperation may come twice, from two threads at the same time",
         kCancellingAdvice, CancelledAtEachPart({"cancel=twice"}, true)},
    };
}

}  // namespace devkit::validate
