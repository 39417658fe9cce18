#pragma once

#include <optional>
#include <string>
#include <vector>

#include "devkit/printschema/reader.h"

namespace devkit::printschema {

// A setting that two tickets do not share, with the texts of Setting in summary.h; nothing on the side that
// does not have it. Several options of one feature are joined with " and ".
struct Difference {
    std::string name;
    std::optional<std::string> before;
    std::optional<std::string> after;

    friend bool operator==(const Difference&, const Difference&) = default;
};

// By name, in the order of the first ticket, then what only the second has. Neither prefixes nor the order of
// entries, options and properties count. Names are written with the prefixes of the first ticket, else those
// of the second.
[[nodiscard]] std::vector<Difference> CompareTickets(const FrameworkDocument& before,
                                                     const FrameworkDocument& after);

}  // namespace devkit::printschema
