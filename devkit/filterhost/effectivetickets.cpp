#include "devkit/filterhost/effectivetickets.h"

#include <string>
#include <unordered_map>

namespace devkit::filterhost {
namespace {

// The tickets that were made, by their scopes and parts.
class Tickets {
  public:
    explicit Tickets(const common::RecordList<MadeCall>& calls) {
        for (const MadeCall& made : calls) {
            const bool isMerge =
                made.call.function == "PTMergeAndValidatePrintTicket" && SUCCEEDED(made.call.result);
            if (!isMerge || !made.call.scope) continue;
            const auto [entry, isFirst] = m_tickets.try_emplace(*made.call.scope + " " + made.part);
            if (isFirst) {
                entry->second = Only{{made.delta, made.output}, made.call.facts};
            } else {
                entry->second.reset();
            }
        }
    }

    // What holds from the part on, when `inherited` holds around it.
    [[nodiscard]] EffectiveTicket From(const PartFacts& part, const std::string& scope,
                                       const EffectiveTicket& inherited) const {
        EffectiveTicket ticket;
        if (!part.ticketBefore) {
            ticket = inherited;
            ticket.made.reset();
            return ticket;
        }
        const auto entry = m_tickets.find(scope + " " + part.kind + " " + part.name);
        if (entry == m_tickets.end() || !entry->second) return ticket;
        ticket.made = entry->second->made;
        ticket.inForce = ticket.made->made;
        ticket.facts = entry->second->facts;
        if (!ticket.facts.mediaSize) ticket.facts.mediaSize = inherited.facts.mediaSize;
        if (!ticket.facts.feedDirection) ticket.facts.feedDirection = inherited.facts.feedDirection;
        return ticket;
    }

  private:
    struct Only {
        EffectiveTicket::Made made;
        printschema::TicketFacts facts;
    };

    std::unordered_map<std::string, std::optional<Only>> m_tickets;  // unset: several were made
};

}  // namespace

std::vector<EffectiveTicket> EffectiveTickets(const RunResult& result) {
    const Tickets tickets(result.providerCalls);
    EffectiveTicket user;
    if (result.provider) {
        // A filter that calls no provider has nothing to do with the ticket.
        if (!result.providerCalls.empty()) user.facts = result.userTicket;
        user.inForce = result.userTicketText;
    }
    EffectiveTicket job = user;
    EffectiveTicket document = user;
    std::vector<EffectiveTicket> each;
    for (const PartFacts& part : result.parts) {
        EffectiveTicket& ticket = each.emplace_back();
        if (part.kind == "FixedDocumentSequence") {
            ticket = job = document = tickets.From(part, "job", user);
        } else if (part.kind == "FixedDocument") {
            ticket = document = tickets.From(part, "document", job);
        } else if (part.kind == "FixedPage") {
            ticket = tickets.From(part, "page", document);
        }
    }
    return each;
}

}  // namespace devkit::filterhost
