#pragma once

#include <cstddef>
#include <functional>

namespace devkit::common {

// Runs the body on `wanted` threads at once, on as many as there are processors for 0, but on no more than
// `most`; returns when each has come to its end. The body may not throw.
void RunInThreads(unsigned wanted, std::size_t most, const std::function<void()>& body);

}  // namespace devkit::common
