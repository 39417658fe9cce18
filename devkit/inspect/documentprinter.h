#pragma once

#include <ostream>

#include "devkit/package/xpsdocument.h"

namespace devkit::inspect {

// Prints a document as a tree, one line for each thing: the sequence, its documents and their pages with
// their sizes, the tickets where they hang and what they ask for, the resources, then the parts that hang
// nowhere in the tree, and what the reader found wrong. UTF-8, lines end in "\n". A part that cannot be read
// says so in its line; a file that cannot be read throws common::StorageError.
void PrintDocument(std::ostream& output, const package::XpsDocument& document);

}  // namespace devkit::inspect
