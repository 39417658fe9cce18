#include <string>

#include "devkit/filterhost/files.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/judging.h"
#include "devkit/validate/probes.h"

namespace devkit::validate {
namespace {

void ManyPages(Trial& trial) {
    const Document& document = trial.Carried(kPages);
    const RunResult& result = trial.Plain(document).result;
    const Order order = trial.OrderFor(document);
    for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
    FailWithBreaches(trial, order, result);
    if (trial.FailureCount() != 0) return;
    ExpectWhole(result);
    for (const std::string& part : Beyond(PartsGiven(result), PartsSent(result)))
        trial.Fail(order, result, part + " was never sent");
}

void ManyJobs(Trial& trial) {
    Order order = trial.OrderFor(trial.Carried(kShort));
    order.probe = probes::kManyJobs;
    const RunResult result = trial.Run(order);
    for (const std::string& failure : FailuresOf(result)) trial.Fail(order, result, failure);
}

// Two of the filter at work at the same time, the second on what the first sends.
void SeveralInstances(Trial& trial) {
    const std::vector<filterhost::FilterSettings>& filters = trial.Settings().host.filters;
    if (filters.front().input != filters.back().output)
        throw Skipped("what the filter writes it does not read");
    Order order = trial.OrderFor(trial.Carried(kShort));
    order.host.filters.clear();
    for (int round = 1; round <= 2; ++round) {
        for (filterhost::FilterSettings filter : filters) {
            filter.name += " of chain " + std::to_string(round);
            order.host.filters.push_back(filter);
        }
    }
    const RunResult result = trial.Run(order);
    for (const std::string& failure : FailuresOf(result))
        trial.Fail(order, result, "twice in a chain: " + failure);
    FailWithBreaches(trial, order, result);
}

void SameBytesTwice(Trial& trial) {
    for (const Document& document : trial.Documents({kShort, kEverything})) {
        const PlainRun& plain = trial.Plain(document);
        if (!IsWhole(plain.result))
            throw Skipped("the filter did not come to a good end with " + document.name);
        Order order = trial.OrderFor(document);
        order.job.output = trial.NewPath("again.xps");
        order.job.outputName = "again.xps";
        const RunResult again = trial.Run(order);
        if (!IsWhole(again)) {
            trial.Fail(order, again, "the second run did not come to a good end");
        } else if (filterhost::ReadFile(plain.output, "output") !=
                   filterhost::ReadFile(*order.job.output, "output")) {
            const auto difference = DifferenceFrom(plain.result, again);
            trial.Fail(order, again, difference.value_or("the second run writes other bytes than the first"));
        }
    }
}

}  // namespace

std::vector<Test> LoadTests() {
    return {
        {"many-pages", 10, "a document of 200 pages comes through", "keep nothing of a page that was sent",
         ManyPages},
        {"many-jobs", 10, "job after job takes no more handles and no more memory",
         "look for what a job leaves in the module: caches, lists, handles", ManyJobs},
        {"several-instances", 10, "two instances of the filter work at the same time",
         "keep what belongs to a job in the filter's object, and guard what all share", SeveralInstances},
        {"same-bytes-twice", 10, "two runs over a document write the same bytes",
         "let no address, no clock and no counter of the process come into what is written", SameBytesTwice},
    };
}

}  // namespace devkit::validate
