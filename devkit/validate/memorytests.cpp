#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "devkit/common/file.h"
#include "devkit/common/text.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/decentend.h"
#include "devkit/validate/memoryprobe.h"
#include "devkit/validate/probes.h"

namespace devkit::validate {
namespace {

Order OrderFor(Trial& trial, const Document& document, const MemoryQuestion& question) {
    Order order = trial.OrderFor(document);
    order.probe = probes::kFailingMemory;
    order.probeArgument = WriteQuestion(question);
    return order;
}

// What the filter asks for when it gets all of it.
MemoryAnswer LookAt(Trial& trial, const Document& document, const Sites& sites) {
    const RunResult result = trial.Run(OrderFor(trial, document, {0, false, sites, 0}));
    if (result.told.empty()) throw Skipped("the filter did not come to a good end with " + document.name);
    MemoryAnswer answer = ReadAnswer(result.told.back());
    if (answer.isIdle) throw Skipped("the filter imports none of the functions that give memory");
    return answer;
}

// Whether what fails at the site is told by std::bad_alloc.
bool ThrowsBadAlloc(Trial& trial, const Document& document, const Allocation& allocation) {
    const RunResult result =
        trial.Run(OrderFor(trial, document, {allocation.way, false, {allocation.site}, 0}));
    return std::ranges::find(result.told, kBadAlloc) != result.told.end();
}

// Leaves out what the runtime asks for its own account: without it that runtime ends the process.
void LeaveOutRuntime(Trial& trial, const Document& document, std::vector<Allocation>& allocations) {
    std::map<std::uint64_t, bool> isRuntime;
    for (const Allocation& allocation : allocations) {
        if (!allocation.mayBeRuntime || isRuntime.contains(allocation.site)) continue;
        isRuntime[allocation.site] = !ThrowsBadAlloc(trial, document, allocation);
    }
    std::erase_if(allocations, [&](const Allocation& allocation) {
        const auto found = isRuntime.find(allocation.site);
        return found != isRuntime.end() && found->second;
    });
}

// "filter.dll+0x1234".
std::string PlaceOf(std::uint64_t site, const filterhost::HostSettings& settings) {
    const std::vector<std::filesystem::path> modules = ModulesOf(settings);
    const std::size_t number = NumberOfModule(site);
    const std::string module =
        number < modules.size() ? common::PathText(modules[number].filename()) : std::string("the filter");
    std::array<char, 24> offset{};
    std::snprintf(offset.data(), offset.size(), "+0x%llX", static_cast<unsigned long long>(OffsetOf(site)));
    return module + offset.data();
}

// A filter that could not be made has told of it by that.
bool WasNotMade(const RunResult& result) {
    return !result.crash && !result.end && result.given.empty() && !result.errors.empty();
}

void Judge(Trial& trial, const Order& order, const RunResult& result, const RunResult& plain) {
    if (WasNotMade(result)) {
        FailWithBreaches(trial, order, result);
    } else {
        JudgeEnd(trial, order, result, E_OUTOFMEMORY, kAnyEnd, plain);
    }
    // The answer comes last, and not at all when the process has ended.
    if (result.told.empty() || result.told.back() == kBadAlloc) return;
    const MemoryAnswer answer = ReadAnswer(result.told.back());
    if (answer.leaked != 0) {
        trial.Fail(order, result,
                   common::Counted(answer.leaked, "block") + " of memory left behind, each time");
    }
    if (!answer.isWhole) {
        trial.Fail(order, result, "the next job, with memory, does not come to a good end");
    } else if (const auto difference = DifferenceFrom(DoneToParts(plain), answer.done)) {
        trial.Fail(order, result, "in the next job, with memory, " + *difference);
    }
}

// A test that memory fails in turn on each way on which the filter asks for it, once or from there on.
std::function<void(Trial&)> EachAllocationFails(bool isForGood) {
    return [isForGood](Trial& trial) {
        for (const Document& document : trial.Documents({kShort})) {
            const RunResult& plain = trial.Plain(document).result;
            if (!IsWhole(plain)) throw Skipped("the filter did not come to a good end with " + document.name);
            MemoryAnswer looked = LookAt(trial, document, {});
            LeaveOutRuntime(trial, document, looked.allocations);
            MemoryQuestion question{0, isForGood, {}, 0};
            for (const Allocation& allocation : looked.allocations) question.sites.insert(allocation.site);
            question.blocks = LookAt(trial, document, question.sites).blocks;
            for (const unsigned number : trial.Choose(static_cast<unsigned>(looked.allocations.size()))) {
                const Allocation& failing = looked.allocations[number - 1];
                question.way = failing.way;
                Order order = OrderFor(trial, document, question);
                order.job.inputName += std::string(" without memory ") + (isForGood ? "from " : "at ") +
                                       PlaceOf(failing.site, order.host);
                Judge(trial, order, trial.Run(order), plain);
            }
        }
    };
}

constexpr std::string_view kMemoryAdvice =
    "look at every pointer, catch std::bad_alloc at every entry, give back what was taken, RequestShutdown "
    "with E_OUTOFMEMORY and return it";

}  // namespace

std::vector<Test> MemoryTests() {
    return {
        {"each-allocation-fails-once", 8, "whichever memory cannot be had, the filter ends decently",
         kMemoryAdvice, EachAllocationFails(false)},
        {"each-allocation-fails-for-good", 8,
         "from whichever point on there is no memory, the filter ends decently", kMemoryAdvice,
         EachAllocationFails(true)},
    };
}

}  // namespace devkit::validate
