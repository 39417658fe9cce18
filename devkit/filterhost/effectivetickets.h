#pragma once

#include <optional>
#include <vector>

#include "devkit/filterhost/runresult.h"

namespace devkit::filterhost {

// What became of a part's ticket at the print ticket provider, and what holds from the part on.
struct EffectiveTicket {
    // What holds says so: the part's own, then what that leaves open by the document's, the job's and the
    // user's.
    printschema::TicketFacts facts;
    // The ticket that holds, in the texts of the result: that of the part, else of the nearest around it.
    std::optional<TextId> inForce;
    // Of the call that made the part's, unset where there was none.
    struct Made {
        std::optional<TextId> asked;
        std::optional<TextId> made;
    };
    std::optional<Made> made;
};

// For each of the parts, in their order. Nothing is said where a part with a ticket had none made for its
// scope, or more than one, nor where there was no simulated provider; of a filter that called none no facts.
[[nodiscard]] std::vector<EffectiveTicket> EffectiveTickets(const RunResult& result);

}  // namespace devkit::filterhost
