#include "devkit/filterhost/effectivetickets.h"

#include <string>
#include <unordered_map>

namespace devkit::filterhost {
namespace {

using printschema::TicketFacts;

// The tickets that were made, by their scopes and parts.
class Tickets {
  public:
    explicit Tickets(const std::vector<MadeCall>& calls) {
        for (const MadeCall& made : calls) {
            const bool isMerge =
                made.call.function == "PTMergeAndValidatePrintTicket" && SUCCEEDED(made.call.result);
            if (!isMerge || !made.call.scope) continue;
            const auto [entry, isFirst] =
                m_tickets.emplace(*made.call.scope + " " + made.part, &made.call.facts);
            if (!isFirst) entry->second = nullptr;
        }
    }

    // What holds from the part on, when `inherited` holds around it.
    [[nodiscard]] TicketFacts From(const PartFacts& part, const std::string& scope,
                                   const TicketFacts& inherited) const {
        if (!part.ticketBefore) return inherited;
        const auto entry = m_tickets.find(scope + " " + part.kind + " " + part.name);
        if (entry == m_tickets.end() || entry->second == nullptr) return {};
        TicketFacts facts = *entry->second;
        if (!facts.mediaSize) facts.mediaSize = inherited.mediaSize;
        if (!facts.feedDirection) facts.feedDirection = inherited.feedDirection;
        return facts;
    }

  private:
    std::unordered_map<std::string, const TicketFacts*> m_tickets;  // null: several were made
};

}  // namespace

std::vector<TicketFacts> EffectiveTickets(const RunResult& result) {
    const Tickets tickets(result.providerCalls);
    const TicketFacts user = result.provider ? result.userTicket : TicketFacts();
    TicketFacts job = user;
    TicketFacts document = user;
    std::vector<TicketFacts> facts;
    for (const PartFacts& part : result.parts) {
        if (part.kind == "FixedDocumentSequence") {
            job = tickets.From(part, "job", user);
            document = job;
        } else if (part.kind == "FixedDocument") {
            document = tickets.From(part, "document", job);
        } else if (part.kind == "FixedPage") {
            facts.push_back(tickets.From(part, "page", document));
        }
    }
    return facts;
}

}  // namespace devkit::filterhost
