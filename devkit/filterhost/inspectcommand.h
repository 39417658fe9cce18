#pragma once

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// `filterhost inspect`: prints each document as a tree of its parts with page sizes and tickets.
[[nodiscard]] ExitStatus Inspect(const InspectSettings& settings);

}  // namespace devkit::filterhost
