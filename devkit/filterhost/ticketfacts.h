#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace devkit::filterhost {

// What a print ticket says about the sheet, by the local names of the Print Schema's keywords.
struct TicketFacts {
    std::optional<std::string> mediaSize;  // "ISOA4"; "210000 x 297000 um" for a size without a name
    std::optional<std::string>
        feedDirection;  // "LongEdgeFirst", of the page's bin, else the document's or job's
};

// Nothing is set for a text that is no print ticket.
[[nodiscard]] TicketFacts ReadTicketFacts(std::string_view ticket);

}  // namespace devkit::filterhost
