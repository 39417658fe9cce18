#include "devkit/filterhost/effectivetickets.h"

#include <cstddef>
#include <string_view>

namespace devkit::filterhost {
namespace {

using pipeline::PartKind;
using pipeline::SentPart;

// The results of the merges of one scope, handed out in their order to the parts with a ticket of their own.
class Merges {
  public:
    Merges(const prntvpt::ProviderReport& report, std::string_view scope, const std::vector<SentPart>& parts,
           PartKind kind) {
        bool recorded = true;
        for (const prntvpt::ProviderCall& call : report.calls) {
            if (call.function != "PTMergeAndValidatePrintTicket" || call.scope != scope ||
                FAILED(call.result))
                continue;
            recorded = recorded && call.output.has_value();
            m_results.push_back(call.output.value_or(std::string()));
        }
        std::size_t tickets = 0;
        for (const SentPart& part : parts) tickets += part.kind == kind && HasTicket(part);
        m_known = recorded && tickets == m_results.size();
    }

    // What holds from the part on, when `inherited` holds around it.
    TicketFacts Next(const SentPart& part, const TicketFacts& inherited) {
        if (!HasTicket(part)) return inherited;
        if (!m_known) return {};
        TicketFacts facts = ReadTicketFacts(m_results[m_next++]);
        if (!facts.mediaSize) facts.mediaSize = inherited.mediaSize;
        if (!facts.feedDirection) facts.feedDirection = inherited.feedDirection;
        return facts;
    }

  private:
    static bool HasTicket(const SentPart& part) {
        return part.part != nullptr && part.part->inputTicket != nullptr;
    }

    std::vector<std::string> m_results;
    std::size_t m_next = 0;
    bool m_known = false;
};

}  // namespace

std::vector<TicketFacts> EffectiveTickets(const std::vector<SentPart>& parts,
                                          const prntvpt::ProviderReport& report,
                                          const std::string& userTicket) {
    Merges jobs(report, "job", parts, PartKind::FixedDocumentSequence);
    Merges documents(report, "document", parts, PartKind::FixedDocument);
    Merges pages(report, "page", parts, PartKind::FixedPage);
    const TicketFacts user = ReadTicketFacts(userTicket);
    TicketFacts job = user;
    TicketFacts document = user;
    std::vector<TicketFacts> facts;
    for (const SentPart& part : parts) {
        if (part.kind == PartKind::FixedDocumentSequence) {
            job = jobs.Next(part, user);
            document = job;
        } else if (part.kind == PartKind::FixedDocument) {
            document = documents.Next(part, job);
        } else if (part.kind == PartKind::FixedPage) {
            facts.push_back(pages.Next(part, document));
        }
    }
    return facts;
}

}  // namespace devkit::filterhost
