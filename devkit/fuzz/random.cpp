#include "devkit/fuzz/random.h"

namespace devkit::fuzz {
namespace {

// SplitMix64: the engine's own seeding leaves neighbouring seeds alike for a while.
std::uint64_t Mixed(std::uint64_t seed) {
    seed += 0x9E3779B97F4A7C15;
    seed = (seed ^ (seed >> 30)) * 0xBF58476D1CE4E5B9;
    seed = (seed ^ (seed >> 27)) * 0x94D049BB133111EB;
    return seed ^ (seed >> 31);
}

}  // namespace

Random::Random(std::uint64_t seed) : m_engine(Mixed(seed)) {}

// The library's distributions are left to each implementation; a remainder is the same everywhere, and its
// bias is of no account here.
std::size_t Random::Below(std::size_t count) {
    return count == 0 ? 0 : static_cast<std::size_t>(m_engine() % count);
}

}  // namespace devkit::fuzz
