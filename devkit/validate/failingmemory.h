#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <vector>

namespace devkit::validate {

// A call by which a module asked the system for memory. Both numbers are the same in every process.
struct Allocation {
    std::uint64_t site = 0;  // where it was called from
    std::uint64_t way = 0;   // the same with the places of the module that led there
    // It may be g++'s runtime that asks, for its account of threads: that ends the process when it gets
    // nothing. Where std::bad_alloc is thrown instead, it is operator new.
    bool mayBeRuntime = false;
};
using Sites = std::set<std::uint64_t>;
// Of a site: which of the modules it is in, counted from 0, and where there.
[[nodiscard]] constexpr std::size_t NumberOfModule(std::uint64_t site) {
    return static_cast<std::size_t>(site >> 48) - 1;
}
[[nodiscard]] constexpr std::uint64_t OffsetOf(std::uint64_t site) { return site & 0xFFFFFFFFFFFF; }

// Stands between loaded modules and the system, in the modules' import tables: notes where they ask for
// memory, lets that fail, and counts what they do not give back. The memory may be the C runtime's, of a heap
// or of COM and its texts. The modules may be unloaded while the object lives, and may outlive it. One at a
// time in a process; the modules may call from any thread.
class FailingMemory {
  public:
    // `onBadAlloc` is called when g++'s std::bad_alloc is thrown after an allocation has failed. Throws
    // std::logic_error where an import table cannot be written.
    explicit FailingMemory(const std::vector<HMODULE>& modules, std::function<void()> onBadAlloc = {});
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    ~FailingMemory();

    // Whether none of the modules imports a function that gives memory.
    [[nodiscard]] bool IsIdle() const noexcept { return m_replaced == 0; }

    // Notes each allocation from now on, the first of each way; what was noted, in the order of the calls.
    void Record();
    [[nodiscard]] std::vector<Allocation> Recorded() const;

    // The next allocation by the way fails; with `isForGood` so do all later ones at one of the sites. What
    // else the modules ask for they get: a runtime without memory for its own account of threads and
    // exceptions ends the process.
    void Fail(std::uint64_t way, bool isForGood, Sites sites);
    // From now on all comes through.
    void Stop();
    // Whether an allocation has failed since Fail.
    [[nodiscard]] bool HasFailed() const;

    // How many blocks of the C runtime and of heaps the modules hold that they got at one of the sites.
    [[nodiscard]] std::size_t BlocksOf(const Sites& sites) const;

  private:
    std::size_t m_replaced = 0;
    void* m_pVectored = nullptr;
};

}  // namespace devkit::validate
