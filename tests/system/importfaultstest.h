#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "faultedjob.h"
#include "importfaults.h"

namespace systemtest {

// What became of a job of which a call failed.
struct Attempt {
    std::size_t calls = 0;  // that the job makes when none fails
    unsigned nth = 0;       // that failed
    bool isForGood = false;
    std::string name;  // of the call, where it is one of an object
    // The places of the filter through which it came, the innermost first.
    std::vector<std::uintptr_t> path;
    std::size_t sentBefore = 0;      // parts that had been sent when the last call failed
    std::optional<HRESULT> notMade;  // why there was no filter
    devkit::pipeline::RunOutcome outcome;
    JobResult result;
};

// Fails the calls that the built filter makes of the system.
class ImportFaultsTest : public FaultedJobTest {
  protected:
    using Check = std::function<void(const Job& job, Attempt& attempt)>;

    void SetUp() override;
    void TearDown() override;

    // Fails the calls of each job, one by one, once and then for good, in a filter that has just been loaded,
    // so that what is made on first use is made then. After the check nothing may have been sent behind the
    // failure that ended the job, the job must give again what it gave at first, and the filter, once
    // unloaded, must have given everything back. The kind of failure is printed with `what` behind the
    // function's name.
    static void FailCalls(tests::Import import, const Check& check, const std::string& what = {});

    // The job ended with the code, which was reported once.
    static void ExpectEnded(const Job& job, const Attempt& attempt, HRESULT code);

  private:
    static void Reload();
    static void RecordWays(const Job& job, tests::Import import, bool isForGood,
                           std::vector<std::uint64_t>& ways);
    static void Try(const Job& job, tests::Import import, Attempt& attempt, const Check& check);
};

}  // namespace systemtest
