#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "devkit/validate/battery.h"
#include "devkit/validate/trial.h"

namespace devkit::validate {

enum class Verdict { Passed, Failed, Skipped };

// What became of one test.
struct TestResult {
    const Test* pTest = nullptr;
    Verdict verdict = Verdict::Passed;
    std::string reason;             // of a skipped one
    std::vector<Failure> failures;  // the first of them
    std::size_t failureCount = 0;
    std::size_t cases = 0;  // runs of the filter
    double seconds = 0;
};

}  // namespace devkit::validate
