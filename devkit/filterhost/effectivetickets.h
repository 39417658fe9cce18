#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "devkit/pipeline/part.h"
#include "devkit/printschema/summary.h"
#include "devkit/prntvpt/control/messages.h"

namespace devkit::filterhost {

// A ticket that the print ticket provider made, and what the filter had in hand when it asked for it.
struct MadeTicket {
    std::string part;   // "FixedPage /1.fpage"
    std::string scope;  // "job", "document", "page"
    printschema::TicketFacts facts;
};

// Collects the tickets of one run; any thread may add.
class MadeTickets {
  public:
    // Takes a call that made a ticket, and passes over any other.
    void Add(const prntvpt::ProviderCall& call, std::string part);
    [[nodiscard]] std::vector<MadeTicket> Take();

  private:
    std::mutex m_lock;
    std::vector<MadeTicket> m_tickets;
};

// What the tickets say that hold for each FixedPage among the parts, in their order, as the print ticket
// provider made them: the page's own, then what that leaves open by the document's, the job's and the user's.
// Nothing is said where a part with a ticket had none made for its scope, or more than one.
[[nodiscard]] std::vector<printschema::TicketFacts> EffectiveTickets(
    const std::vector<pipeline::SentPart>& parts, const std::vector<MadeTicket>& tickets,
    const printschema::TicketFacts& user);

}  // namespace devkit::filterhost
