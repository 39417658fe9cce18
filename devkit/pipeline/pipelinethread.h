#pragma once

#include "platform/windows.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "devkit/pipeline/runcontext.h"
#include "devkit/pipeline/runobserver.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// Calls a method of the filter; that an exception leaves it is a breach, and gives E_UNEXPECTED.
template <typename Body>
[[nodiscard]] HRESULT CallFilter(RunContext& context, const char* method, Body&& body) noexcept {
    context.Observer()->CallBegins(method);
    HRESULT result = E_UNEXPECTED;
    try {
        result = std::forward<Body>(body)();
    } catch (...) {
        result = context.Breach(Check::Exception, std::string("an exception left ") + method, E_UNEXPECTED);
    }
    context.Observer()->CallEnds(method);
    return result;
}

// Runs StartOperation on the calling thread, which is a fresh one, and gives its result. The thread first
// enters a single-threaded apartment when wanted, then `setUp` is called; what it returns lives until
// StartOperation has returned; `onApartmentEntered` is ApartmentWatch's, for StartOperation. That the thread
// comes back in another apartment, or impersonating, is a breach.
[[nodiscard]] HRESULT RunPipelineThread(
    IPrintPipelineFilter& filter, RunContext& context, bool singleThreaded,
    const std::function<std::shared_ptr<void>()>& setUp,
    const std::function<std::shared_ptr<void>()>& onApartmentEntered) noexcept;

}  // namespace devkit::pipeline
