#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "devkit/common/record.h"
#include "devkit/filterhost/texttable.h"
#include "devkit/pipeline/part.h"
#include "devkit/printschema/summary.h"

namespace devkit::filterhost {

// In 1/96 inch.
struct PageSize {
    double width = 0;
    double height = 0;

    friend bool operator==(const PageSize&, const PageSize&) = default;
};

// What a filter did to a page.
struct PageFacts {
    std::optional<PageSize> before;  // unset when the markup does not start as a page, and for a new page
    std::optional<PageSize> after;
    std::size_t bytesBefore = 0;
    std::size_t bytesAfter = 0;
    bool rewritten = false;
    bool turned = false;  // all content now stands in a canvas that turns it by a right angle
    bool ticketReplaced = false;
    printschema::TicketFacts newTicket;    // of the ticket that replaces the input's
    std::optional<std::string> malformed;  // why the markup that comes out is not well-formed XML
};

// A part as the filter sent it.
struct PartFacts {
    std::string kind;  // "FixedPage"
    std::string name;  // empty for the XPS document and for an object that is not the kit's
    std::optional<std::string> ticketBefore{};  // part names
    std::optional<std::string> ticketAfter{};
    // Of the tickets in the texts of a result: the one that came with the part, and the one that replaces it.
    std::optional<TextId> ownTicket{};
    std::optional<TextId> newTicket{};
    std::optional<PageFacts> page{};  // of a FixedPage
};

template <typename Visit>
void RecordFields(Visit& visit, common::MaybeConst<PageFacts> auto& page) {
    visit(page.before, page.after, page.bytesBefore, page.bytesAfter, page.rewritten, page.turned,
          page.ticketReplaced, page.newTicket, page.malformed);
}
template <typename Visit>
void RecordFields(Visit& visit, common::MaybeConst<PartFacts> auto& part) {
    visit(part.kind, part.name, part.ticketBefore, part.ticketAfter, part.ownTicket, part.newTicket,
          part.page);
}

// The texts of a part's tickets.
struct TicketTexts {
    std::optional<std::string> own;          // that came with the part
    std::optional<std::string> replacement;  // that the filter gave it instead
};
[[nodiscard]] TicketTexts ReadTickets(const pipeline::SentPart& part);

// Looks at a part that was just sent. Throws common::Error when the input cannot be read.
[[nodiscard]] PartFacts LookAtPart(const pipeline::SentPart& part);

}  // namespace devkit::filterhost
