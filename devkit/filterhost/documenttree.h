#pragma once

#include <string>

#include "devkit/package/xpsdocument.h"

namespace devkit::filterhost {

// The document as an indented tree: one line for the whole, then one for the sequence, each document and each
// page with its size in 1/96 inch, its ticket and the number of its resources, then the findings. Throws
// package::PackageError when a page cannot be read.
[[nodiscard]] std::string WriteTree(const package::XpsDocument& document);

}  // namespace devkit::filterhost
