#pragma once

#include <cstdint>

namespace devkit::common {

// FNV-1a of 64 bits (draft-eastlake-fnv of the IETF): the same on every machine, in one step for each byte or
// number that it takes. Numbers larger than a byte are taken at once, which spreads them well enough to tell
// them apart. Protects against nobody who looks for collisions.
class FnvHash {
  public:
    constexpr FnvHash& Take(std::uint64_t number) noexcept {
        m_value = (m_value ^ number) * 0x100000001B3U;
        return *this;
    }
    [[nodiscard]] constexpr std::uint64_t Value() const noexcept { return m_value; }

  private:
    std::uint64_t m_value = 0xCBF29CE484222325U;
};

}  // namespace devkit::common
