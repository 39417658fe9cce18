#pragma once

#include "platform/windows.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace tests {

// Whether the first text, with the second right behind it, stands anywhere in the memory that this process
// has allocated: what a debugger finds in the stopped process, or in its dump. The two are given apart so
// that the question is not its own answer.
[[nodiscard]] inline bool IsInProcessMemory(std::string_view first, std::string_view second) {
    constexpr std::size_t kChunk = 1024 * 1024;
    const std::size_t length = first.size() + second.size();
    std::string chunk;
    MEMORY_BASIC_INFORMATION region = {};
    for (char* address = nullptr; VirtualQuery(address, &region, sizeof(region)) != 0;
         address = static_cast<char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State != MEM_COMMIT || region.Type != MEM_PRIVATE || region.Protect != PAGE_READWRITE) {
            continue;
        }
        for (std::size_t offset = 0; offset < region.RegionSize; offset += kChunk) {
            chunk.resize(std::min(region.RegionSize - offset, kChunk + length));
            SIZE_T read = 0;
            if (!ReadProcessMemory(GetCurrentProcess(), static_cast<char*>(region.BaseAddress) + offset,
                                   chunk.data(), chunk.size(), &read)) {
                continue;
            }
            const std::string_view bytes(chunk.data(), read);
            for (std::size_t found = bytes.find(first); found != std::string_view::npos;
                 found = bytes.find(first, found + 1)) {
                if (bytes.substr(found + first.size()).starts_with(second)) return true;
            }
        }
    }
    return false;
}

}  // namespace tests
