#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace devkit::package {

// An entry as it is to stand in the archive; what is unset is what an honest writer says of stored data.
struct RawEntry {
    RawEntry(std::string entryName, std::string entryData)
        : name(std::move(entryName)), data(std::move(entryData)) {}

    std::string name;
    std::string data;  // as the archive holds it
    std::uint16_t method = 0;
    std::uint16_t flags = 0;
    std::optional<std::uint32_t> crc;
    std::optional<std::uint32_t> size;
    std::optional<std::uint32_t> compressedSize;
    std::optional<std::uint32_t> localOffset;  // for the directory
};

// A zip archive byte by byte, honest or not. With flag 8 an entry has its sizes behind its data.
[[nodiscard]] std::string BuildZip(const std::vector<RawEntry>& entries);

// The raw deflate stream of so many zero bytes, about a 158th of their number.
[[nodiscard]] std::string DeflatedZeros(std::size_t count);

[[nodiscard]] std::uint32_t Crc32(std::string_view bytes);

}  // namespace devkit::package
