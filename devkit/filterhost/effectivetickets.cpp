#include "devkit/filterhost/effectivetickets.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace devkit::filterhost {
namespace {

using pipeline::PartKind;
using pipeline::SentPart;
using printschema::TicketFacts;

// The one ticket that was made for the part at its scope; nothing when there are none or several.
std::optional<TicketFacts> MadeFor(const SentPart& part, std::string_view scope,
                                   const std::vector<MadeTicket>& tickets) {
    const std::string name = pipeline::NameOf(part.kind) + std::string(" ") + part.name;
    const MadeTicket* pFound = nullptr;
    for (const MadeTicket& ticket : tickets) {
        if (ticket.part != name || ticket.scope != scope) continue;
        if (pFound != nullptr) return std::nullopt;
        pFound = &ticket;
    }
    return pFound == nullptr ? std::nullopt : std::optional(pFound->facts);
}

// What holds from the part on, when `inherited` holds around it.
TicketFacts HoldsFrom(const SentPart& part, std::string_view scope, const std::vector<MadeTicket>& tickets,
                      const TicketFacts& inherited) {
    if (part.part == nullptr || part.part->inputTicket == nullptr) return inherited;
    std::optional<TicketFacts> facts = MadeFor(part, scope, tickets);
    if (!facts) return {};
    if (!facts->mediaSize) facts->mediaSize = inherited.mediaSize;
    if (!facts->feedDirection) facts->feedDirection = inherited.feedDirection;
    return *facts;
}

}  // namespace

void MadeTickets::Add(const prntvpt::ProviderCall& call, std::string part) {
    if (call.function != "PTMergeAndValidatePrintTicket" || !call.scope || FAILED(call.result)) return;
    const std::lock_guard guard(m_lock);
    m_tickets.push_back({std::move(part), *call.scope, call.facts});
}

std::vector<MadeTicket> MadeTickets::Take() {
    const std::lock_guard guard(m_lock);
    return std::move(m_tickets);
}

std::vector<TicketFacts> EffectiveTickets(const std::vector<SentPart>& parts,
                                          const std::vector<MadeTicket>& tickets, const TicketFacts& user) {
    TicketFacts job = user;
    TicketFacts document = user;
    std::vector<TicketFacts> facts;
    for (const SentPart& part : parts) {
        if (part.kind == PartKind::FixedDocumentSequence) {
            job = HoldsFrom(part, "job", tickets, user);
            document = job;
        } else if (part.kind == PartKind::FixedDocument) {
            document = HoldsFrom(part, "document", tickets, job);
        } else if (part.kind == PartKind::FixedPage) {
            facts.push_back(HoldsFrom(part, "page", tickets, document));
        }
    }
    return facts;
}

}  // namespace devkit::filterhost
