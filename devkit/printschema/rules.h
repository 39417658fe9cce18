#pragma once

#include <string>
#include <string_view>

#include "devkit/printschema/element.h"

namespace devkit::printschema {

// The rules of the Print Schema Framework on elements and attributes.

[[nodiscard]] bool IsRoot(Tag tag);
[[nodiscard]] bool MayContain(Tag parent, Tag child);
// Options, too, may have a name, but need none: their scored properties can identify them.
[[nodiscard]] bool MayHaveName(Tag tag);
[[nodiscard]] bool MustHaveName(Tag tag);
// `propagate` is reserved, and those of the namespaces of XML and of schema instances say nothing about a
// ticket.
[[nodiscard]] bool IsIgnoredAttribute(std::string_view uri, std::string_view local);
// How the platform calls what is defined twice: "feature or parameter".
[[nodiscard]] std::string DuplicateKind(Tag tag);

}  // namespace devkit::printschema
