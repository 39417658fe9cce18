#pragma once

#include <vector>

#include "devkit/filterhost/runresult.h"

namespace devkit::filterhost {

// What the tickets say that hold for each FixedPage among the parts, in their order, as the print ticket
// provider made them: the page's own, then what that leaves open by the document's, the job's and the user's.
// Nothing is said where a part with a ticket had none made for its scope, or more than one, nor where there
// was no simulated provider.
[[nodiscard]] std::vector<printschema::TicketFacts> EffectiveTickets(const RunResult& result);

}  // namespace devkit::filterhost
