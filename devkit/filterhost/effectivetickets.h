#pragma once

#include <string>
#include <vector>

#include "devkit/filterhost/ticketfacts.h"
#include "devkit/pipeline/part.h"
#include "devkit/prntvpt/client/simulatedprovider.h"

namespace devkit::filterhost {

// What the tickets say that hold for each FixedPage among the parts, in their order, as the print ticket
// provider gave them: the page's own merge, then what that leaves open by the document's, the job's and the
// user's. A merge can be told to belong to a part only by its order, so nothing is said where the provider
// was not called exactly once for each part with a ticket.
[[nodiscard]] std::vector<TicketFacts> EffectiveTickets(const std::vector<pipeline::SentPart>& parts,
                                                        const prntvpt::ProviderReport& report,
                                                        const std::string& userTicket);

}  // namespace devkit::filterhost
