#pragma once

#include "platform/windows.h"

#include <memory>

namespace devkit::common {

struct HandleClose {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};

// Owns a handle of a process, a thread, a pipe: one whose invalid value is null.
using UniqueHandle = std::unique_ptr<void, HandleClose>;

}  // namespace devkit::common
