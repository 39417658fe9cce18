#include "devkit/fuzz/guide.h"

#include <algorithm>

namespace devkit::fuzz {
namespace {

// Each link is made again for each case behind it, and what has gone through many is hardly a document.
constexpr std::size_t kMostLinks = 8;

// So that the choice has nothing to do with the mutations that the seed stands for.
constexpr std::uint64_t kSalt = 0x6775696465;

}  // namespace

Chain Guide::ChainOf(std::uint64_t seed) const {
    Random random(seed ^ kSalt);
    if (m_kept.empty() || random.OneIn(3)) return {seed};
    // Rather one of the later ones, which led farther.
    const std::size_t place = std::max(random.Below(m_kept.size()), random.Below(m_kept.size()));
    Chain chain = m_kept[place].chain;
    chain.push_back(seed);
    return chain;
}

void Guide::TakeBase(const Edges& edges) { m_reachedByBases += Add(edges); }

std::size_t Guide::Take(const Chain& chain, const Edges& edges, bool canGrow) {
    const std::size_t added = Add(edges);
    if (added != 0 && canGrow && chain.size() < kMostLinks && m_kept.size() < m_mostKept)
        m_kept.push_back({chain, added});
    return added;
}

std::size_t Guide::Add(const Edges& edges) {
    const std::size_t before = m_reached.size();
    m_reached.insert(edges.begin(), edges.end());
    return m_reached.size() - before;
}

}  // namespace devkit::fuzz
