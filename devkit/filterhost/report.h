#pragma once

#include <string>
#include <vector>

#include "devkit/filterhost/runresult.h"

namespace devkit::filterhost {

// The report for programs: a JSON array of one object an input, in UTF-8.
[[nodiscard]] std::string WriteReport(const std::vector<RunResult>& results);

}  // namespace devkit::filterhost
