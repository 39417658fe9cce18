#include <string>
#include <utility>

#include "devkit/validate/battery.h"
#include "devkit/validate/judging.h"

namespace devkit::validate {
namespace {

using filterhost::HostSettings;
using Change = std::function<void(HostSettings& settings)>;

Change Pipeline(std::string text) {
    return [text = std::move(text)](HostSettings& settings) { settings.pipelineSwitches.push_back(text); };
}

Change Provider(std::string text) {
    return [text = std::move(text)](HostSettings& settings) { settings.providerSwitches.push_back(text); };
}

Change Device(std::string model) {
    return [model = std::move(model)](HostSettings& settings) { settings.device = model; };
}

void WithoutDriverProperties(HostSettings& settings) {
    settings.driverProperties = false;
    settings.driverValues.clear();
    settings.queueValues.clear();
}

enum class Wanted {
    TheSame,    // that the filter does what it does without the change
    AGoodEnd,   // that it carries the document
    ADecentEnd  // that it carries the document, or fails and says so
};

void Judge(Trial& trial, const Order& order, const RunResult& result, Wanted wanted, const RunResult& plain) {
    if (wanted == Wanted::TheSame) return ExpectAsPlain(trial, order, result, plain);
    FailWithBreaches(trial, order, result);
    const bool hasFailed = result.end && !result.crash && FAILED(result.end->result) && !result.end->hung;
    if (wanted == Wanted::ADecentEnd && hasFailed)
        return FailWith(trial, order, result, {common::Check::SilentFailure});
    for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
}

// A test that the filter comes to what is wanted under each of the changes, one at a time.
std::function<void(Trial&)> Under(std::vector<Change> changes, Wanted wanted) {
    return [changes = std::move(changes), wanted](Trial& trial) {
        bool isTried = false;
        for (const Document& document : trial.Documents({kShort})) {
            const RunResult& plain = trial.Plain(document).result;
            if (wanted == Wanted::TheSame) ExpectWhole(plain);
            for (const Change& change : changes) {
                Order order = trial.OrderFor(document);
                change(order.host);
                const RunResult result = trial.Run(order);
                if (IsIdle(result)) continue;
                isTried = true;
                Judge(trial, order, result, wanted, plain);
            }
        }
        if (!isTried) throw Skipped("the filter does nothing that this could make a difference to");
    };
}

constexpr const char* kNotFound = "=0x80070490";

std::vector<Change> EachPropertyMissing() {
    std::vector<Change> changes;
    for (const char* const name :
         {"PerUserPrintTicket", "JobPrintTicket", "PrinterName", "PrinterHandle", "UserSecurityToken",
          "JobId", "DriverPropertyBag", "QueuePropertyBag", "ProgressReport", "PrintClassFactory"}) {
        changes.push_back(Pipeline(std::string("fail=IPrintPipelinePropertyBag::GetProperty(") + name +
                                   ")@1+" + kNotFound));
    }
    return changes;
}

}  // namespace

std::vector<Test> VariationTests() {
    return {
        {"any-apartment", 4, "the filter works on a thread in a single-threaded apartment as on one in none",
         "enter an apartment of the filter's own, and take S_FALSE and RPC_E_CHANGED_MODE for what they are",
         Under({Pipeline("apartment=single")}, Wanted::TheSame)},
        {"short-reads", 4, "streams may give fewer bytes than were asked for",
         "read until the end flag is set or nothing more comes",
         Under({Pipeline("short-reads=1"), Pipeline("short-reads=7"), Pipeline("short-reads=100")},
               Wanted::TheSame)},
        {"short-writes", 4, "streams may take fewer bytes than were given", "write what is left over again",
         Under({Pipeline("short-writes=1"), Pipeline("short-writes=7"), Pipeline("short-writes=100")},
               Wanted::TheSame)},
        {"late-end-of-data", 4, "the end of a stream may come with its last bytes or by itself",
         "stop at the end flag, and at a read that gives nothing",
         Under({Pipeline("end-flag=alone")}, Wanted::TheSame)},
        {"missing-tickets", 4, "a part without a ticket may answer with a failure, or with success and null",
         "look at the pointer, whatever the code says",
         Under({Pipeline("missing-ticket=null")}, Wanted::TheSame)},
        {"last-release-elsewhere", 4, "the last release may come on a thread that has not entered COM",
         "give back in StartOperation what belongs to its thread",
         Under({Pipeline("last-release=other-thread")}, Wanted::TheSame)},
        {"provider-writes-otherwise", 4, "the ticket provider may choose order, encoding and white space",
         "look features up by name, and leave the encoding to the XML reader",
         Under({Provider("order=input"), Provider("order=reversed"), Provider("encoding=utf8-bom"),
                Provider("encoding=utf16le"), Provider("whitespace=pretty"), Provider("whitespace=comments")},
               Wanted::TheSame)},
        // A filter may insist on the customary prefixes, where it says so: docs/installing.md does.
        {"provider-prefixes", 4,
         "the ticket provider may choose prefixes, or the filter refuses them in a failure that is told",
         "compare names by namespace",
         Under({Provider("prefixes=mangled"), Provider("prefixes=default-ns"), Provider("prefixes=local"),
                Provider("prefixes=collide")},
               Wanted::ADecentEnd)},
        {"other-devices", 4, "the filter carries a document for whatever device",
         "let capabilities and tickets say what the device can do",
         Under({Device("simprinter-us"), Device("longedge"), Device("shortedge"), Device("asymmetric")},
               Wanted::AGoodEnd)},
        {"properties-missing", 4,
         "a property that is not there leads to a default, or to a failure that is told",
         "look at what GetProperty answers, and RequestShutdown with it where nothing can be done",
         Under(EachPropertyMissing(), Wanted::ADecentEnd)},
        {"no-driver-properties", 4,
         "a driver without a property bag leads to defaults, or to a failure that is told",
         "treat an absent bag as an empty one", Under({&WithoutDriverProperties}, Wanted::ADecentEnd)},
    };
}

}  // namespace devkit::validate
