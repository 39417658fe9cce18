#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>

namespace devkit::fuzz {

// Numbers that a seed determines, on every machine and with every library.
class Random {
  public:
    // Seeds that differ little give numbers that have nothing to do with each other.
    explicit Random(std::uint64_t seed);

    [[nodiscard]] std::uint64_t Next() { return m_engine(); }
    // From 0 to count - 1; 0 for a count of 0.
    [[nodiscard]] std::size_t Below(std::size_t count);
    [[nodiscard]] bool OneIn(std::size_t count) { return Below(count) == 0; }
    // `values` may not be empty.
    template <typename Range>
    [[nodiscard]] const auto& Pick(const Range& values) {
        return values[Below(std::size(values))];
    }

  private:
    std::mt19937_64 m_engine;
};

}  // namespace devkit::fuzz
