#pragma once

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// `filterhost run`. The calling thread must stand in the multithreaded apartment. Throws UsageError.
[[nodiscard]] ExitStatus Run(const RunSettings& settings);

}  // namespace devkit::filterhost
