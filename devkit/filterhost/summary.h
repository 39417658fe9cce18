#pragma once

#include <string>
#include <vector>

#include "devkit/filterhost/runresult.h"

namespace devkit::filterhost {

// The summary of one input, for people: a line for the run, one a page, one for what the print ticket
// provider saw, and the findings. Without the problems.
[[nodiscard]] std::string WriteSummary(const RunResult& result);

// What went wrong, a line each without line break: an unreadable input, the filter's failure, each breach.
[[nodiscard]] std::vector<std::string> WriteProblems(const RunResult& result);

}  // namespace devkit::filterhost
