#include "devkit/pipeline/fontobfuscation.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>

namespace devkit::pipeline {
namespace {

using Key = std::array<std::uint8_t, 16>;
constexpr std::size_t kMixedBytes = 32;

// The bytes of the GUID in the order of its digits.
std::optional<Key> KeyOf(std::string_view partName) noexcept {
    std::string_view name = partName.substr(partName.find_last_of("/\\") + 1);
    name = name.substr(0, name.find('.'));
    constexpr std::string_view kPattern = "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";
    if (name.size() != kPattern.size()) return std::nullopt;
    Key key{};
    std::size_t next = 0;
    for (std::size_t at = 0; at < name.size();) {
        if (kPattern[at] == '-') {
            if (name[at++] != '-') return std::nullopt;
            continue;
        }
        const char* const pDigits = name.data() + at;
        const auto [pEnd, error] = std::from_chars(pDigits, pDigits + 2, key[next++], 16);
        if (error != std::errc() || pEnd != pDigits + 2) return std::nullopt;
        at += 2;
    }
    return key;
}

}  // namespace

bool IsNamedByGuid(std::string_view partName) noexcept { return KeyOf(partName).has_value(); }

std::string ToggleObfuscation(std::string bytes, std::string_view partName) {
    const std::optional<Key> key = KeyOf(partName);
    if (!key || bytes.size() < kMixedBytes) return bytes;
    for (std::size_t i = 0; i < kMixedBytes; ++i) {
        // From the GUID's last byte to its first, twice.
        const std::uint8_t mask = (*key)[key->size() - 1 - i % key->size()];
        bytes[i] = static_cast<char>(static_cast<std::uint8_t>(bytes[i]) ^ mask);
    }
    return bytes;
}

}  // namespace devkit::pipeline
