#pragma once

#include "platform/windows.h"

#include <functional>
#include <memory>

#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// Runs StartOperation on the calling thread, which is a fresh one, and gives its result. The thread first
// enters a single-threaded apartment when wanted, then `setUp` is called; what it returns lives until
// StartOperation has returned. That the thread comes back in another apartment, or impersonating, is a
// breach.
[[nodiscard]] HRESULT RunPipelineThread(IPrintPipelineFilter& filter, RunContext& context,
                                        bool singleThreaded,
                                        const std::function<std::shared_ptr<void>()>& setUp) noexcept;

}  // namespace devkit::pipeline
