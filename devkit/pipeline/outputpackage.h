#pragma once

#include <filesystem>
#include <vector>

#include "devkit/package/xpsdocument.h"
#include "devkit/pipeline/sentpart.h"

namespace devkit::pipeline {

// Puts what the filter sent into the tree of the document that it was read from: pages and documents in their
// sending order, rewritten markup, tickets, resources and thumbnail. Parts that the filter made get a legal
// and unique name near to the one it gave. The parts must hold a FixedDocumentSequence. Throws
// package::PackageError.
void ApplySentParts(package::XpsDocument& document, const std::vector<SentPart>& parts);

}  // namespace devkit::pipeline
