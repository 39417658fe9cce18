#pragma once

#include "platform/windows.h"

#include <cstddef>

namespace tests {

// From now on, until the module is unloaded, every block that it takes from malloc, as its operator new does,
// ends at a page that cannot be touched, but for what rounds it up to 16 bytes; a block that was freed cannot
// be touched any more, and its pages are never used again. So an access behind a block, or to a freed one, is
// an access violation in the line that makes it. A write into the bytes of the rounding, and a block that is
// freed twice, end the process when it is freed. A new block is filled with a pattern.
//
// What the module had allocated before, and what its libraries allocate for it, stays the system's. To be
// called when the module has just been loaded. std::logic_error when it imports no malloc. For 64 bits, where
// addresses do not run out.
void GuardHeapOf(HMODULE module);

struct GuardedBlocks {
    std::size_t allocated = 0;
    std::size_t freed = 0;
};
// Of all modules together.
[[nodiscard]] GuardedBlocks CountGuardedBlocks() noexcept;

}  // namespace tests
