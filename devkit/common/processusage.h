#pragma once

#include "platform/windows.h"

#include <cstddef>

namespace devkit::common {

// What the calling process has of the system.
struct ProcessUsage {
    DWORD handles = 0;
    std::size_t privateBytes = 0;  // committed for it alone; Wine tells of none

    [[nodiscard]] static ProcessUsage Now();
};

}  // namespace devkit::common
