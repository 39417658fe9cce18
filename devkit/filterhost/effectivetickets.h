#pragma once

#include <string>
#include <vector>

#include "devkit/pipeline/sentpart.h"
#include "devkit/prntvpt/simulatedprovider.h"

namespace devkit::filterhost {

// The ticket that holds for each FixedPage among the parts, in their order, as the print ticket provider gave
// it: the result of the page's own merge, or else of the document's, the job's, or the user's ticket. A merge
// can be told to belong to a part only by its order, so a text is empty where the provider was not called
// exactly once for each part with a ticket, as some filters do.
[[nodiscard]] std::vector<std::string> EffectiveTickets(const std::vector<pipeline::SentPart>& parts,
                                                        const prntvpt::ProviderReport& report,
                                                        const std::string& userTicket);

}  // namespace devkit::filterhost
