#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "devkit/package/pagedimensions.h"
#include "devkit/pipeline/part.h"
#include "devkit/printschema/summary.h"

namespace devkit::filterhost {

// What a filter did to a page.
struct PageFacts {
    std::string name;
    std::optional<package::PageDimensions> before;  // unset when the markup does not start as a page
    std::optional<package::PageDimensions> after;
    std::size_t bytesBefore = 0;
    std::size_t bytesAfter = 0;
    bool rewritten = false;
    bool turned = false;  // the content now stands in a canvas that turns it by a right angle
    bool ticketReplaced = false;
    std::optional<std::string> ticketBefore;  // part names
    std::optional<std::string> ticketAfter;
    std::optional<std::string> feedDirection;  // of the tickets that held, where that is known
    std::optional<std::string> mediaSize;      // of the ticket that the page leaves with, where that is known
    std::optional<std::string> malformed;      // why the markup that comes out is not well-formed XML
};

// `effective` is what the tickets say that held for the page. Throws common::Error when the input
// cannot be read.
[[nodiscard]] PageFacts LookAtPage(const pipeline::SentPart& page, const printschema::TicketFacts& effective);

}  // namespace devkit::filterhost
