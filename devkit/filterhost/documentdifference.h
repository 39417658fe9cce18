#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "devkit/package/xpsdocument.h"

namespace devkit::filterhost {

// What sets two things apart, for people, a line each; a line that begins with spaces belongs to the one
// before. No lines: nothing that counts does.

// Tickets feature by feature, by what they ask for: neither prefixes nor order count. Throws
// printschema::FormatError for what is no ticket.
[[nodiscard]] std::vector<std::string> DiffTickets(std::string_view before, std::string_view after);

// Documents page by page: sizes, markup, tickets feature by feature and resources. Pages and fixed documents
// belong together by their names, by their places where no name is in both. common::Error for a document that
// cannot be read.
[[nodiscard]] std::vector<std::string> DiffDocuments(const package::XpsDocument& before,
                                                     const package::XpsDocument& after);

}  // namespace devkit::filterhost
