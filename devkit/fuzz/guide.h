#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "devkit/fuzz/fuzzcase.h"

namespace devkit::fuzz {

// Numbers of edges of code that have run.
using Edges = std::vector<std::uint32_t>;

// A case that reached edges which none before it did.
struct KeptCase {
    Chain chain;
    std::size_t edges = 0;  // how many
};

// Which cases are gone on from: those that reach what none before them did. What it says depends on nothing
// but the seeds and what it was told before.
class Guide {
  public:
    // Keeps at most so many; once there are, what others reach is only counted.
    explicit Guide(std::size_t mostKept) : m_mostKept(mostKept) {}

    // The case of the seed: a base document with its mutations, or a kept case with its mutations besides.
    [[nodiscard]] Chain ChainOf(std::uint64_t seed) const;

    // What a base document reaches by itself.
    void TakeBase(const Edges& edges);
    // What a case reached. `canGrow`: whether others may be made of it. The number of edges that are new.
    std::size_t Take(const Chain& chain, const Edges& edges, bool canGrow);

    [[nodiscard]] std::size_t Reached() const noexcept { return m_reached.size(); }
    [[nodiscard]] std::size_t ReachedByBases() const noexcept { return m_reachedByBases; }
    // In the order in which they came.
    [[nodiscard]] const std::vector<KeptCase>& Kept() const noexcept { return m_kept; }

  private:
    std::size_t Add(const Edges& edges);

    const std::size_t m_mostKept;
    std::unordered_set<std::uint32_t> m_reached;
    std::size_t m_reachedByBases = 0;
    std::vector<KeptCase> m_kept;
};

}  // namespace devkit::fuzz
