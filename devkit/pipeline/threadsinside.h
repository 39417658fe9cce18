#pragma once

#include "platform/windows.h"

#include <cstddef>

namespace devkit::pipeline {

// How many threads of this process, the calling one excepted, stand in code of the module or are to return
// into it. Each is stopped for as long as its stack is looked at. What a thread has left behind on its stack
// can be taken for a return address, if it was one before; a thread that never ran code of the module is
// never counted.
[[nodiscard]] std::size_t CountThreadsInside(HMODULE module);

}  // namespace devkit::pipeline
