#include "guardedheap.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>

#include "devkit/common/importtable.h"

namespace tests {
namespace {

using devkit::common::ReplaceWith;

constexpr std::size_t kPage = 4096;
constexpr std::size_t kAlignment = 16;
constexpr unsigned char kFresh = 0xCD;
constexpr unsigned char kRounding = 0xFD;

constexpr std::size_t RoundUp(std::size_t size, std::size_t unit) noexcept {
    return (size + unit - 1) / unit * unit;
}

// What a module's allocator had; the same for every module, which is the C library's.
struct System {
    decltype(&std::malloc) malloc = nullptr;
    decltype(&std::calloc) calloc = nullptr;
    decltype(&std::realloc) realloc = nullptr;
    decltype(&std::free) free = nullptr;
};
System g_system;

[[noreturn]] void Complain(const char* what, const void* pBlock) {
    std::fprintf(stderr, "guarded heap: %s: %p\n", what, pBlock);
    std::abort();
}

// Pages one after the other, each given out once.
class GuardedHeap {
  public:
    void* Allocate(std::size_t size) {
        const std::scoped_lock lock(m_lock);
        const std::size_t rounded = RoundUp(std::max<std::size_t>(size, 1), kAlignment);
        const std::size_t committed = RoundUp(rounded, kPage);
        char* const pPages = TakePages(committed + kPage);
        if (pPages == nullptr || VirtualAlloc(pPages, committed, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
            return nullptr;
        }
        char* const pBlock = pPages + committed - rounded;
        std::memset(pPages, kRounding, committed);
        std::memset(pBlock, kFresh, size);
        m_blocks.emplace(pBlock, size);
        ++m_counts.allocated;
        return pBlock;
    }

    // False for a block that is not of this heap.
    bool Free(void* pBlock) {
        const std::scoped_lock lock(m_lock);
        const auto found = m_blocks.find(static_cast<char*>(pBlock));
        if (found == m_blocks.end()) {
            if (IsOfArena(pBlock)) Complain("a block is freed twice, or in its middle", pBlock);
            return false;
        }
        const std::size_t rounded = RoundUp(std::max<std::size_t>(found->second, 1), kAlignment);
        const char* const pEnd = found->first + rounded;
        const char* const pRounding = found->first + found->second;
        const bool isWhole = std::all_of(
            pRounding, pEnd, [](char byte) { return static_cast<unsigned char>(byte) == kRounding; });
        if (!isWhole) Complain("something was written behind the end of a block", pBlock);
        const std::size_t committed = RoundUp(rounded, kPage);
        if (!VirtualFree(const_cast<char*>(pEnd) - committed, committed, MEM_DECOMMIT)) {
            Complain("a block's pages cannot be given back", pBlock);
        }
        m_blocks.erase(found);
        ++m_counts.freed;
        return true;
    }

    // 0 for a block that is not of this heap.
    std::size_t SizeOf(void* pBlock) {
        const std::scoped_lock lock(m_lock);
        const auto found = m_blocks.find(static_cast<char*>(pBlock));
        return found == m_blocks.end() ? 0 : std::max<std::size_t>(found->second, 1);
    }

    [[nodiscard]] GuardedBlocks Counts() {
        const std::scoped_lock lock(m_lock);
        return m_counts;
    }

  private:
    static constexpr std::size_t kArena = std::size_t{1} << 30;

    char* TakePages(std::size_t size) {
        if (size > kArena) return Reserve(size);
        if (m_left < size) {
            m_pNext = Reserve(kArena);
            m_left = m_pNext == nullptr ? 0 : kArena;
            if (m_pNext == nullptr) return nullptr;
        }
        char* const pPages = m_pNext;
        m_pNext += size;
        m_left -= size;
        return pPages;
    }

    char* Reserve(std::size_t size) {
        auto* const pArena = static_cast<char*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS));
        if (pArena != nullptr) m_arenas.emplace(pArena, size);
        return pArena;
    }

    [[nodiscard]] bool IsOfArena(const void* pBlock) const {
        const auto* const pByte = static_cast<const char*>(pBlock);
        auto behind = m_arenas.upper_bound(const_cast<char*>(pByte));
        if (behind == m_arenas.begin()) return false;
        --behind;
        return pByte < behind->first + behind->second;
    }

    std::mutex m_lock;
    std::map<char*, std::size_t> m_arenas;
    char* m_pNext = nullptr;
    std::size_t m_left = 0;
    std::map<char*, std::size_t> m_blocks;
    GuardedBlocks m_counts;
};

// Never destroyed: a module may be unloaded after the program's own objects.
GuardedHeap& Heap() {
    static auto* const pHeap = new GuardedHeap;
    return *pHeap;
}

void* Malloc(std::size_t size) { return Heap().Allocate(size); }

void* Calloc(std::size_t count, std::size_t size) {
    if (size != 0 && count > SIZE_MAX / size) return nullptr;
    void* const pBlock = Heap().Allocate(count * size);
    if (pBlock != nullptr) std::memset(pBlock, 0, count * size);
    return pBlock;
}

void Free(void* pBlock) {
    if (pBlock != nullptr && !Heap().Free(pBlock)) g_system.free(pBlock);
}

void* Realloc(void* pBlock, std::size_t size) {
    if (pBlock == nullptr) return Malloc(size);
    const std::size_t before = Heap().SizeOf(pBlock);
    if (before == 0) return g_system.realloc(pBlock, size);
    if (size == 0) {
        Free(pBlock);
        return nullptr;
    }
    void* const pNew = Malloc(size);
    if (pNew == nullptr) return nullptr;
    std::memcpy(pNew, pBlock, std::min(before, size));
    Free(pBlock);
    return pNew;
}

}  // namespace

void GuardHeapOf(HMODULE module) {
    if (sizeof(void*) < 8) throw std::logic_error("the addresses of 32 bits run out");
    const std::size_t replaced =
        devkit::common::ReplaceImports(module, {{"malloc", ReplaceWith(&Malloc, g_system.malloc)},
                                                {"calloc", ReplaceWith(&Calloc, g_system.calloc)},
                                                {"realloc", ReplaceWith(&Realloc, g_system.realloc)},
                                                {"free", ReplaceWith(&Free, g_system.free)}});
    if (replaced < 2) throw std::logic_error("the module has no allocator that could be replaced");
}

GuardedBlocks CountGuardedBlocks() noexcept { return Heap().Counts(); }

}  // namespace tests
