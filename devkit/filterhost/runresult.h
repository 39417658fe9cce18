#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "devkit/filterhost/effectivetickets.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/pagefacts.h"
#include "devkit/pipeline/filterrun.h"
#include "devkit/prntvpt/control/messages.h"

namespace devkit::filterhost {

// What became of one input of `filterhost run`.
struct RunResult {
    std::string input;
    std::optional<std::string> output;  // set when it was written
    std::optional<std::string> error;   // why the input cannot be read, or the output not be written
    std::optional<pipeline::RunOutcome> outcome;  // set when the filter was run
    std::vector<std::string> breaches;            // of the pipeline's rules, then of the ticket provider's
    std::vector<std::string> findings;  // what is odd about the input or the pages, but breaks no rule
    std::vector<PageFacts> pages;       // of the FixedPages among the outcome's parts, in their order
    std::optional<prntvpt::ProviderReport> provider;
    std::vector<MadeTicket> tickets;  // what the simulated provider made, in the order of the calls
    ExitStatus status = Done;
};

}  // namespace devkit::filterhost
