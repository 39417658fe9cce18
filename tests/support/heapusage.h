#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <vector>

namespace tests {

// What is in use in all heaps of the process, those of the libraries' C code included.
struct HeapUsage {
    std::size_t blocks = 0;
    std::size_t bytes = 0;

    [[nodiscard]] static HeapUsage Now() {
        std::vector<HANDLE> heaps(64);
        heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
        HeapUsage usage;
        for (const HANDLE heap : heaps) {
            HeapLock(heap);
            PROCESS_HEAP_ENTRY entry{};
            while (HeapWalk(heap, &entry)) {
                if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) == 0) continue;
                ++usage.blocks;
                usage.bytes += entry.cbData;
            }
            HeapUnlock(heap);
        }
        return usage;
    }
};

}  // namespace tests
