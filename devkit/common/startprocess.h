#pragma once

#include "platform/windows.h"

#include <string>

#include "devkit/common/uniquehandle.h"

namespace devkit::common {

// Starts a program, given by its path, with the command line; it inherits what may be inherited. Gives the
// process; the size in `start` is filled in. Throws std::system_error.
// Wine, on a busy machine, was seen to give up a process with ERROR_INTERNAL_ERROR before any of its code had
// run, once in some thousand starts. Nothing has happened then, so it is tried again.
[[nodiscard]] UniqueHandle StartProcess(const std::wstring& program, std::wstring line,
                                        STARTUPINFOW start = {});

}  // namespace devkit::common
