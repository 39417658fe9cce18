#pragma once

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// `filterhost run`. The calling thread must stand in the multithreaded apartment. Throws UsageError.
[[nodiscard]] ExitStatus Run(const RunSettings& settings);

// `filterhost inspect`: prints each document as a tree of its parts with page sizes and tickets.
[[nodiscard]] ExitStatus Inspect(const InspectSettings& settings);

}  // namespace devkit::filterhost
