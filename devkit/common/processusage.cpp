#include "devkit/common/processusage.h"

#include <psapi.h>

#include <cstdint>

namespace devkit::common {
namespace {

// Wine tells of none, so they are looked at one by one there. It gives out the lowest that is free, so where
// there has been none for long there are no more.
DWORD CountHandles() {
    constexpr std::uintptr_t kStep = 4;
    constexpr std::uintptr_t kLong = 0x1000;
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count != 0) return count;
    std::uintptr_t last = 0;
    for (std::uintptr_t value = kStep; value < last + kLong; value += kStep) {
        DWORD flags = 0;
        if (!GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) continue;
        ++count;
        last = value;
    }
    return count;
}

}  // namespace

ProcessUsage ProcessUsage::Now() {
    PROCESS_MEMORY_COUNTERS_EX counters{};
    counters.cb = sizeof(counters);
    const DWORD handles = CountHandles();
    K32GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                            sizeof(counters));
    return {handles, counters.PrivateUsage};
}

}  // namespace devkit::common
