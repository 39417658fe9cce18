#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "devkit/common/limits.h"

namespace devkit::inspect {

// What a print ticket asks for, one text for each setting in document order, with the prefixes of the ticket:
// "psk:JobCopiesAllDocuments = 2", "psk:PageMediaSize = psk:ISOA4 (psk:MediaSizeWidth 210000,
// psk:MediaSizeHeight 297000)"; a nested feature stands behind its parent's name and a slash, what has no
// name is "(unnamed)". Throws common::Error, naming the part, when the ticket cannot be parsed or is none.
[[nodiscard]] std::vector<std::string> SummarizeTicket(std::string_view ticket, const std::string& partName,
                                                       const common::XmlLimits& limits);

}  // namespace devkit::inspect
