#pragma once

#include <string>
#include <vector>

#include "devkit/filterhost/runresult.h"

namespace devkit::filterhost {

// The summary of one input, for people: a line for the run, one a page, one for what the print ticket
// provider saw, and the findings. Without the problems.
[[nodiscard]] std::string WriteSummary(const RunResult& result);

// What was decided for a FixedPage: its size before and after, the feed direction and the sheet that hold for
// it and whether it was turned, where tickets show them, and what became of its ticket.
[[nodiscard]] std::string DecisionText(const PartFacts& part, const printschema::TicketFacts& effective);

// What went wrong, a line each without line break: an unreadable input, the filter's failure, each breach.
[[nodiscard]] std::vector<std::string> WriteProblems(const RunResult& result);

}  // namespace devkit::filterhost
