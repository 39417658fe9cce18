#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "devkit/filterhost/settings.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/documents.h"
#include "devkit/validate/testresult.h"
#include "devkit/validate/testtrace.h"

namespace devkit::validate {

// The tests that the settings ask for, in the order of the battery. Throws UsageError for a pattern that is
// none.
[[nodiscard]] std::vector<const Test*> Selected(const filterhost::ValidateSettings& settings);

// Tells of each result, in the order of the tests.
using TestSink = std::function<void(const TestResult&)>;

// Runs the tests, several at once. False when the user interrupted: then later tests have no result. Throws
// what the sink throws. The trace may be null.
[[nodiscard]] bool RunTests(const filterhost::ValidateSettings& settings,
                            const std::vector<const Test*>& tests, const std::vector<Document>& given,
                            std::uint64_t seed, const TestSink& sink, TestTrace* pTrace);

}  // namespace devkit::validate
