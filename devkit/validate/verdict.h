#pragma once

#include <cstddef>
#include <string>

#include "devkit/filterhost/exitstatus.h"
#include "devkit/validate/testresult.h"

namespace devkit::validate {

// "passed", "failed" or "skipped".
[[nodiscard]] const char* NameOf(Verdict verdict);

// How many tests came to what.
struct Tally {
    std::size_t passed = 0;
    std::size_t failed = 0;
    std::size_t skipped = 0;

    void Add(const TestResult& result);
    // FilterFailed where a test failed; WrongUsage where none says anything of the filter.
    [[nodiscard]] filterhost::ExitStatus Status() const;
};

// The head of the table of results, and the line of one.
[[nodiscard]] std::string TableHead();
[[nodiscard]] std::string TableLine(const TestResult& result);

// What a failed test found, with what to do. Empty for others.
[[nodiscard]] std::string WriteFailures(const TestResult& result);

// "filter.dll is fit at level 5: 30 passed, 1 skipped".
[[nodiscard]] std::string WriteVerdict(const std::string& filter, const Tally& tally, unsigned level);

// The tests up to the level, with what each proves.
[[nodiscard]] std::string ListTests(unsigned level);

}  // namespace devkit::validate
