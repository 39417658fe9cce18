#pragma once

#include <functional>

#include "devkit/filterhost/runresult.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// Called for each result, in the order of the jobs.
using ResultSink = std::function<void(const RunResult&)>;

// Runs every job in a child process of its own, several at once, and watches over them: whatever a filter
// does to its process ends one job. False when the user interrupted; jobs that had not begun then have no
// result. Throws UsageError for what would fail with every job.
[[nodiscard]] bool Supervise(const RunSettings& settings, const ResultSink& sink);

}  // namespace devkit::filterhost
