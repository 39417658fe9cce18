#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <type_traits>
#include <unordered_set>

#include "devkit/filterhost/exitstatus.h"
#include "devkit/fuzz/guide.h"

namespace devkit::filterhost {

// A DLL without a table of its edges.
class NoEdges : public UsageError {
  public:
    using UsageError::UsageError;
};

// The edges of a filter and of this program that run while the object lives, as far as their tables tell: see
// edges/edgetable.h. The filter stays loaded as long. For one at a time.
class EdgeWatch {
  public:
    // Throws NoEdges.
    explicit EdgeWatch(const std::filesystem::path& filter);

    // The numbers of those that `known` does not hold, which then holds them.
    [[nodiscard]] fuzz::Edges Reached(std::unordered_set<std::uint32_t>& known) const;
    // Leaves the filter loaded for good: threads of its own are at it.
    void Abandon() noexcept { static_cast<void>(m_filter.release()); }

  private:
    struct Unload {
        void operator()(HMODULE module) const noexcept { FreeLibrary(module); }
    };

    std::unique_ptr<std::remove_pointer_t<HMODULE>, Unload> m_filter;
    const std::span<unsigned char> m_filters;
    const std::span<unsigned char> m_own;  // empty where this program has no table
};

}  // namespace devkit::filterhost
