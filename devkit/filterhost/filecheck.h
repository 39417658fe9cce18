#pragma once

#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// Throws UsageError when a file that the run would write is one that it reads, or another that it writes.
// Files are compared as files, whatever their paths: links and letter case do not make another file.
void CheckFiles(const RunSettings& settings);

}  // namespace devkit::filterhost
