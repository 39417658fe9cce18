#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace devkit::printschema {

struct TicketProblem {
    enum class Kind {
        NoTicket,     // nobody can read it as a print ticket
        TwoPrefixes,  // nor this one: a name stands twice among siblings, with two prefixes of one namespace
        BrokenRule,   // it can be read, and a provider refuses or changes it
    };
    Kind kind = Kind::NoTicket;
    std::string text;
};

// What in a ticket does not keep the rules of the Print Schema, empty for a good one. Of what cannot be read
// as a ticket only the first reason is known.
[[nodiscard]] std::vector<TicketProblem> CheckTicket(std::string_view bytes);

// The first name that stands twice among the framework's elements of one parent, written with two prefixes
// that are bound to the same namespace: "PageX twice, as psk:PageX and ns0:PageX: two prefixes of one
// namespace". Nothing for what is not well-formed.
[[nodiscard]] std::optional<std::string> FindTwoPrefixes(std::string_view bytes);

}  // namespace devkit::printschema
