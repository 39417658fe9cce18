#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "filtertest.h"

namespace systemtest {

// The ways that lead to a call are told apart by their last places. A build that inlines less has more places
// on a way, so that fewer ways differ in the last ones.
#if defined(PAGEVALIDATE_COVERAGE) || defined(PAGEVALIDATE_TRAPS)
inline constexpr bool kTellsWaysApart = false;
#else
inline constexpr bool kTellsWaysApart = true;
#endif

// A small job that the tests of failures run again and again. Before the sequence comes a part of no kind
// that the filter knows.
struct Job {
    std::string name;
    std::string device;
    std::shared_ptr<const devkit::pipeline::JobInput> input;
    unsigned cancelAt = 0;
};

// One that passes through, one whose tickets merge at all scopes, one that turns a page, one that re-sizes,
// one that fails by itself, one that is cancelled.
[[nodiscard]] const std::vector<Job>& Jobs();
[[nodiscard]] const Job& JobNamed(std::string_view name);

// What a job gives: the codes, and each part that was sent with its bytes and its ticket's. The numbers that
// the filter counts in the names of its tickets are written as "N".
struct JobResult {
    HRESULT result = E_PENDING;
    std::vector<HRESULT> shutdownCodes;
    std::vector<std::string> sent;

    bool operator==(const JobResult&) const = default;
};

[[nodiscard]] JobResult ResultOf(const devkit::pipeline::RunOutcome& outcome);

// More than a job makes of any kind.
inline constexpr unsigned kMostCalls = 100000;

// What a job comes to that ends with the code after its first parts were sent; nobody is told when `told` is
// empty.
[[nodiscard]] JobResult EndedEarly(const JobResult& good, std::size_t sent, HRESULT code,
                                   std::vector<HRESULT> told);

// Runs the jobs and looks at everything that a failure could have left behind.
class FaultedJobTest : public FilterTest {
  protected:
    [[nodiscard]] static devkit::pipeline::RunOptions OptionsOf(const Job& job);
    // Without the driver's name for the prefix of private names.
    [[nodiscard]] static devkit::pipeline::RunOptions OptionsWithoutPrefix(const Job& job);
    [[nodiscard]] static devkit::pipeline::RunOutcome RunJob(const Job& job,
                                                             devkit::pipeline::RunOptions options) {
        return Run(std::move(options), job.input);
    }
    // What the job gives when nothing fails; run once.
    [[nodiscard]] static const JobResult& GoodResult(const Job& job);
    [[nodiscard]] static const JobResult& ResultWithoutPrefix(const Job& job);

    // Nothing is left over, and the thread has the locale that it had.
    static void ExpectNothingChanged(const devkit::pipeline::RunOutcome& outcome);
    // How many places a kind of failure struck in a job; printed, and never fewer than is written down here.
    static void ExpectTried(const std::string& kind, const Job& job, std::size_t tried);
    // The job still gives what it gave the first time.
    static void ExpectGoodResult(const Job& job);
};

}  // namespace systemtest
