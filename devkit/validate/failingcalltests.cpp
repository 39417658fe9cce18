#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "devkit/common/hresult.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/decentend.h"
#include "devkit/validate/judging.h"

namespace devkit::validate {
namespace {

using common::Check;

// The code that the calls fail with. No call of the pipeline fails with it by itself.
constexpr HRESULT kCode = static_cast<HRESULT>(0x80070017);

struct Ends {
    std::string_view call;
    unsigned ends;
    std::string_view reason;
};

// Of calls that are not listed a filter may do without the answer.
constexpr auto kEnds = std::to_array<Ends>({
    {"IXpsDocumentProvider::GetXpsPart", kFails, "the rest of the document is lost"},
    {"IXpsDocumentConsumer::SendXpsDocument", kFails, "the part is lost"},
    {"IXpsDocumentConsumer::SendXpsUnknown", kFails, "the part is lost"},
    {"IXpsDocumentConsumer::SendFixedDocumentSequence", kFails, "the part is lost"},
    {"IXpsDocumentConsumer::SendFixedDocument", kFails, "the part is lost"},
    {"IXpsDocumentConsumer::SendFixedPage", kFails, "the part is lost"},
    {"IInterFilterCommunicator::RequestReader", kFails, "there is nothing to read"},
    {"IInterFilterCommunicator::RequestWriter", kFails, "there is nobody to send to"},
    {"IPrintReadStream::ReadBytes", kAnyEnd, "what was to be read may not matter to the document"},
    {"IXpsDocumentConsumer::CloseSender", kFails | kFailsUntold,
     "all was sent, and who waits for the end learns of it from StartOperation"},
    {"IPrintPipelineManagerControl::RequestShutdown", kFails | kFailsUntold, "nobody can be told"},
    {"IPrintWriteStream::WriteBytes", kAnyEnd | kBadTicket,
     "a page whose new ticket could not be written goes on with an empty one, under which the document's "
     "holds"},
});

unsigned EndsOf(std::string_view call) {
    const auto found = std::ranges::find(kEnds, call, &Ends::call);
    return found == kEnds.end() ? kAnyEnd : found->ends;
}

// How often the filters of the run called each method, at most.
std::map<std::string, unsigned> CallsOf(const RunResult& result) {
    std::map<std::string, unsigned> calls;
    for (const filterhost::FilterEnd& filter : result.end->filters) {
        for (const auto& [call, count] : filter.pipelineCalls) calls[call] = std::max(calls[call], count);
    }
    return calls;
}

struct FailingCall {
    std::string call;
    unsigned nth = 1;
};

// Each call that the plain run makes.
std::vector<FailingCall> FailingCallsOf(const RunResult& plain) {
    std::vector<FailingCall> all;
    for (const auto& [call, count] : CallsOf(plain)) {
        // A method without a result cannot fail.
        if (call == "IPrintWriteStream::Close") continue;
        for (unsigned nth = 1; nth <= count; ++nth) all.push_back({call, nth});
    }
    return all;
}

// A test that each call fails in turn, once or for good.
std::function<void(Trial&)> EachCallFails(bool isForGood) {
    return [isForGood](Trial& trial) {
        for (const Document& document : trial.Documents({kShort})) {
            const RunResult& plain = trial.Plain(document).result;
            if (!IsWhole(plain)) throw Skipped("the filter did not come to a good end with " + document.name);
            const std::vector<FailingCall> calls = FailingCallsOf(plain);
            for (const unsigned number : trial.Choose(static_cast<unsigned>(calls.size()))) {
                const FailingCall& failing = calls[number - 1];
                Order order = trial.OrderFor(document);
                order.host.pipelineSwitches.push_back("fail=" + failing.call + "@" +
                                                      std::to_string(failing.nth) + (isForGood ? "+=" : "=") +
                                                      common::HexOf(kCode));
                const RunResult result = trial.Run(order);
                if (!IsIdle(result)) JudgeEnd(trial, order, result, kCode, EndsOf(failing.call), plain);
            }
        }
    };
}

// A test that each query of a part for an interface is refused in turn.
void EachInterfaceRefused(Trial& trial) {
    constexpr unsigned kMost = 100000;
    for (const Document& document : trial.Documents({kShort})) {
        const RunResult& plain = trial.Plain(document).result;
        if (!IsWhole(plain)) throw Skipped("the filter did not come to a good end with " + document.name);
        const unsigned most = trial.Settings().cases == 0 ? kMost : trial.Settings().cases;
        for (unsigned nth = 1; nth <= most; ++nth) {
            Order order = trial.OrderFor(document);
            order.host.pipelineSwitches.push_back("fail=IUnknown::QueryInterface@" + std::to_string(nth) +
                                                  "=E_NOINTERFACE");
            const RunResult result = trial.Run(order);
            if (IsIdle(result)) break;
            // What hides its kind goes on as something of no kind.
            FailWithBreaches(trial, order, result,
                             {Check::Kind, Check::OrderDocument, Check::OrderSequence, Check::OrderPage,
                              Check::SequenceMissing});
            if (!IsWhole(result) && (result.crash || !result.end || SUCCEEDED(result.end->result)))
                for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
        }
    }
}

// How the ticket provider can fail, and with what.
struct ProviderFault {
    const char* text;
    bool isOfMerges;
};
constexpr auto kProviderFaults = std::to_array<ProviderFault>({
    {"open-denied", false},
    {"open-gone", false},
    {"open-rpc", false},
    {"merge-refuse-base", true},
    {"merge-refuse-delta", true},
    {"merge-fail", true},
    {"merge-oom", true},
    {"out-shortwrite", true},
});

void ProviderFails(Trial& trial) {
    for (const Document& document : trial.Documents({kShort})) {
        const RunResult& plain = trial.Plain(document).result;
        const auto merges = static_cast<unsigned>(
            std::ranges::count(plain.providerCalls, "PTMergeAndValidatePrintTicket",
                               [](const filterhost::MadeCall& made) { return made.call.function; }));
        if (plain.providerCalls.empty()) throw Skipped("the filter uses no print ticket provider");
        for (const ProviderFault& fault : kProviderFaults) {
            for (const unsigned nth : trial.Choose(fault.isOfMerges ? merges : 1)) {
                Order order = trial.OrderFor(document);
                order.host.providerSwitches.push_back(std::string("fault=") + fault.text + "@" +
                                                      std::to_string(nth));
                const RunResult result = trial.Run(order);
                if (IsIdle(result)) continue;
                FailWithBreaches(trial, order, result);
                FailWith(trial, order, result, {Check::SilentFailure});
                const bool isDecent = result.end && !result.crash && !result.end->hung &&
                                      (FAILED(result.end->result) || PartsSent(result) == PartsSent(plain));
                if (isDecent) continue;
                for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
                if (result.end && SUCCEEDED(result.end->result))
                    trial.Fail(order, result, "the filter succeeds, and not every part was sent");
            }
        }
    }
}

constexpr std::string_view kFailingCallAdvice =
    "look at every code; on a failure close what is open, CloseSender, RequestShutdown with the code and "
    "return it";

}  // namespace

std::vector<Test> FailingCallTests() {
    return {
        {"each-call-fails-once", 7, "whichever call of the pipeline fails, the filter ends decently",
         kFailingCallAdvice, EachCallFails(false)},
        {"each-call-fails-for-good", 7, "from whichever call on the pipeline fails, the filter ends decently",
         kFailingCallAdvice, EachCallFails(true)},
        {"each-interface-refused", 7, "whichever interface a part does not have, the filter ends decently",
         kFailingCallAdvice, EachInterfaceRefused},
        {"ticket-provider-fails", 7, "whichever call of the ticket provider fails, the filter ends decently",
         kFailingCallAdvice, ProviderFails},
    };
}

}  // namespace devkit::validate
