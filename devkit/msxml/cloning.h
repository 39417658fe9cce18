#pragma once

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// See CloneNode. Throws std::bad_alloc.
[[nodiscard]] NodeRef Clone(const Node& node, bool isDeep);

}  // namespace devkit::msxml
