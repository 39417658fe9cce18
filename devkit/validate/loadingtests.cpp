#include <string>

#include "devkit/validate/battery.h"
#include "devkit/validate/judging.h"
#include "devkit/validate/probes.h"
#include "devkit/validate/trial.h"

namespace devkit::validate {
namespace {

// A test that a probe of the module finds nothing wrong.
std::function<void(Trial&)> Probed(const char* probe) {
    return [probe](Trial& trial) {
        const Order order{trial.Settings().host, {}, probe};
        const RunResult result = trial.Run(order);
        for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
    };
}

void Initialises(Trial& trial) {
    Order order = trial.OrderFor(trial.Carried(kShort));
    order.host.pipelineSwitches.emplace_back("start=never");
    const RunResult result = trial.Run(order);
    for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
    FailWithBreaches(trial, order, result);
}

}  // namespace

std::vector<Test> LoadingTests() {
    return {
        {"loads-and-unloads", 1, "the module can be loaded, used and unloaded, again and again",
         "count every object, the factory's too, and join every thread before the last release",
         Probed(probes::kReloading)},
        {"class-object", 1, "DllGetClassObject refuses classes and interfaces that there are not, and null",
         "answer CLASS_E_CLASSNOTAVAILABLE, E_NOINTERFACE and E_POINTER, and leave null behind",
         Probed(probes::kClassObject)},
        {"class-factory", 1, "the class factory refuses aggregation, unknown interfaces and null",
         "answer CLASS_E_NOAGGREGATION, E_NOINTERFACE and E_POINTER, and leave null behind",
         Probed(probes::kFactory)},
        {"identity", 1, "the filter is one COM object whatever it is asked for",
         "give the same IUnknown each time, and E_NOINTERFACE with null for what is not there",
         Probed(probes::kIdentity)},
        {"made-and-released", 1, "filters that are made and never initialised leave nothing behind",
         "let DllCanUnloadNow count objects from their construction to their destruction",
         Probed(probes::kUninitialised)},
        {"null-initialisation", 1,
         "InitializeFilter refuses null pointers and keeps nothing of what it refuses",
         "check the three arguments before anything else, and answer E_POINTER or E_INVALIDARG",
         Probed(probes::kNullInitialisation)},
        {"initialises", 1, "a filter that is initialised and not started can be let go",
         "acquire in StartOperation what only StartOperation gives back", Initialises},
    };
}

}  // namespace devkit::validate
