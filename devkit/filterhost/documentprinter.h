#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <string>

#include "devkit/package/pagedimensions.h"
#include "devkit/package/xpsdocument.h"

namespace devkit::filterhost {

// "793.76 x 1122.56 (210.0 x 297.0 mm), portrait"; the first pair is 1/96 inch.
[[nodiscard]] std::string SizeText(const package::PageDimensions& page);

// "-12,-12,840,1080"
[[nodiscard]] std::string BoxText(const std::array<double, 4>& box);

// "1 byte", "1,234 bytes"
[[nodiscard]] std::string BytesText(std::uint64_t count);

// Prints a document as a tree, one line for each thing: the sequence, its documents and their pages with
// their sizes, the tickets where they hang and what they ask for, the resources, then the parts that hang
// nowhere in the tree, and what the reader found wrong. UTF-8, lines end in "\n". A part that cannot be read
// says so in its line; a file that cannot be read throws common::StorageError.
void PrintDocument(std::ostream& output, const package::XpsDocument& document);

}  // namespace devkit::filterhost
