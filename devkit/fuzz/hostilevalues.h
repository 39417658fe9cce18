#pragma once

#include <string>

#include "devkit/fuzz/random.h"

namespace devkit::fuzz {

// Numbers at every limit, and what only looks like one.
[[nodiscard]] std::string HostileNumber(Random& random);
// Texts that paths, formats, prefixes and numbers stumble over; UTF-8, fit for an attribute's value.
[[nodiscard]] std::string HostileText(Random& random);
// Names of parts and targets of relationships, legal and not.
[[nodiscard]] std::string HostileName(Random& random);
// A text of so many bytes.
[[nodiscard]] std::string LongText(std::size_t size);

}  // namespace devkit::fuzz
