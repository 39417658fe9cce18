#include <benchmark/benchmark.h>

#include <string>

#include "bench/pagejob.h"

namespace bench {
namespace {

constexpr int kPages = 400;

// The time of one page: a job's, shared out among its pages.
void OfOnePage(benchmark::State& state, PageTickets tickets, double (PageJob::*run)()) {
    for (auto _ : state) {
        PageJob job(kPages, tickets);
        state.SetIterationTime((job.*run)() / kPages);
    }
}

// Each floor right before what it is the floor of.
const bool kPagesRegistered = [] {
    struct Kind {
        const char* name;
        PageTickets tickets;
    };
    for (const Kind kind : {Kind{"None", PageTickets::None}, Kind{"Same", PageTickets::Same},
                            Kind{"Other", PageTickets::Other}}) {
        const auto add = [&](const std::string& name, double (PageJob::*run)()) {
            benchmark::RegisterBenchmark(
                name.c_str(), [=](benchmark::State& state) { OfOnePage(state, kind.tickets, run); })
                ->Iterations(5)
                ->Unit(benchmark::kMicrosecond)
                ->UseManualTime();
        };
        add(std::string("PageFloor") + kind.name, &PageJob::RunBare);
        add(std::string("Page") + kind.name, &PageJob::RunFilter);
    }
    return true;
}();

}  // namespace
}  // namespace bench
