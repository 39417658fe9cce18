#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/common/record.h"
#include "devkit/printschema/reader.h"

namespace devkit::printschema {

// A value that is longer is data, such as a device's own settings.
inline constexpr std::size_t kLongestValue = 60;

// The name with the first prefix that is bound to its namespace: "psk:ISOA4"; "{URI}ISOA4" without one.
[[nodiscard]] std::string NameText(const QName& name, const std::vector<PrefixBinding>& prefixes);

// One thing that a ticket asks for.
struct Setting {
    std::string name;   // "psk:PageMediaSize"; a nested feature stands behind its parent's name and a slash
    std::string value;  // "psk:ISOA4 (psk:MediaSizeWidth 210000, psk:MediaSizeHeight 297000)", "(unnamed)"

    friend bool operator==(const Setting&, const Setting&) = default;
};

// What the ticket asks for in the order of the document: an entry for each selected option and each
// parameter. Of a longer value only the number of its characters is told.
[[nodiscard]] std::vector<Setting> SettingsOf(const Element& ticket,
                                              const std::vector<PrefixBinding>& prefixes,
                                              std::size_t longestValue = kLongestValue);

// What a ticket says about the sheet, by the local names of the Print Schema's keywords.
struct TicketFacts {
    std::optional<std::string> mediaSize;  // "ISOA4"; "210000 x 297000 um" for a size without a name
    std::optional<std::string>
        feedDirection;  // "LongEdgeFirst", of the page's bin, else the document's or job's

    friend bool operator==(const TicketFacts&, const TicketFacts&) = default;
};
template <typename Visit>
void RecordFields(Visit& visit, common::MaybeConst<TicketFacts> auto& facts) {
    visit(facts.mediaSize, facts.feedDirection);
}
[[nodiscard]] TicketFacts FactsOf(const Element& ticket);
// Nothing is set for bytes that are no print ticket.
[[nodiscard]] TicketFacts ReadFacts(std::string_view ticket);

}  // namespace devkit::printschema
