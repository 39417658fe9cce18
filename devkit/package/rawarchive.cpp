#include "devkit/package/rawarchive.h"

#include <zlib.h>

#include <algorithm>

namespace devkit::package {

namespace {

constexpr std::uint16_t kSizesBehind = 8;
constexpr std::size_t kMostEntries = 0xFFFF;

void Put(std::string& bytes, std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}

struct Described {
    const RawEntry& entry;
    std::uint32_t crc;
    std::uint32_t compressedSize;
    std::uint32_t size;
    std::uint32_t offset;
};

void PutCommon(std::string& bytes, const Described& entry, bool sizesBehind) {
    Put(bytes, 20, 2);
    Put(bytes, entry.entry.flags, 2);
    Put(bytes, entry.entry.method, 2);
    Put(bytes, 0, 2);
    Put(bytes, 0x21, 2);  // 1 January 1980
    Put(bytes, sizesBehind ? 0 : entry.crc, 4);
    Put(bytes, sizesBehind ? 0 : entry.compressedSize, 4);
    Put(bytes, sizesBehind ? 0 : entry.size, 4);
    Put(bytes, entry.entry.name.size(), 2);
    Put(bytes, 0, 2);
}

void PutLocal(std::string& bytes, const Described& entry) {
    const bool sizesBehind = (entry.entry.flags & kSizesBehind) != 0;
    Put(bytes, 0x04034B50, 4);
    PutCommon(bytes, entry, sizesBehind);
    bytes += entry.entry.name + entry.entry.data;
    if (!sizesBehind) return;
    Put(bytes, 0x08074B50, 4);
    Put(bytes, entry.crc, 4);
    Put(bytes, entry.compressedSize, 4);
    Put(bytes, entry.size, 4);
}

void PutCentral(std::string& bytes, const Described& entry) {
    Put(bytes, 0x02014B50, 4);
    Put(bytes, 20, 2);
    PutCommon(bytes, entry, false);
    Put(bytes, 0, 2);  // comment
    Put(bytes, 0, 2);  // disk
    Put(bytes, 0, 2);  // internal attributes
    Put(bytes, 0, 4);  // external attributes
    Put(bytes, entry.entry.localOffset.value_or(entry.offset), 4);
    bytes += entry.entry.name;
}

// The records for an archive with more entries than the plain ones can count.
void PutZip64End(std::string& bytes, std::size_t count, std::size_t start, std::size_t size,
                 std::size_t end) {
    Put(bytes, 0x06064B50, 4);
    Put(bytes, 44, 8);
    Put(bytes, 45, 2);
    Put(bytes, 45, 2);
    Put(bytes, 0, 8);  // disks
    Put(bytes, count, 8);
    Put(bytes, count, 8);
    Put(bytes, size, 8);
    Put(bytes, start, 8);
    Put(bytes, 0x07064B50, 4);
    Put(bytes, 0, 4);
    Put(bytes, end, 8);
    Put(bytes, 1, 4);
}

// Bits from the lowest up, as deflate packs them.
class BitWriter {
  public:
    void Put(unsigned value, int count) {
        for (int i = 0; i < count; ++i) Bit(value >> i & 1U);
    }
    // Huffman codes come highest bit first.
    void PutCode(unsigned code, int count) {
        for (int i = count - 1; i >= 0; --i) Bit(code >> i & 1U);
    }
    [[nodiscard]] const std::string& Bytes() const { return m_bytes; }

  private:
    void Bit(unsigned bit) {
        if (m_used == 0) m_bytes += '\0';
        m_bytes.back() = static_cast<char>(static_cast<unsigned char>(m_bytes.back()) | bit << m_used);
        m_used = (m_used + 1) % 8;
    }

    std::string m_bytes;
    int m_used = 0;
};

}  // namespace

std::string BuildZip(const std::vector<RawEntry>& entries) {
    std::string bytes;
    std::vector<Described> described;
    for (const RawEntry& entry : entries) {
        const auto length = static_cast<std::uint32_t>(entry.data.size());
        described.push_back({entry, entry.crc.value_or(Crc32(entry.data)),
                             entry.compressedSize.value_or(length), entry.size.value_or(length),
                             static_cast<std::uint32_t>(bytes.size())});
        PutLocal(bytes, described.back());
    }
    const std::size_t start = bytes.size();
    for (const Described& entry : described) PutCentral(bytes, entry);
    const std::size_t size = bytes.size() - start;
    const std::size_t end = bytes.size();
    if (entries.size() > kMostEntries) PutZip64End(bytes, entries.size(), start, size, end);
    Put(bytes, 0x06054B50, 4);
    Put(bytes, 0, 4);  // disks
    Put(bytes, std::min(entries.size(), kMostEntries), 2);
    Put(bytes, std::min(entries.size(), kMostEntries), 2);
    Put(bytes, size, 4);
    Put(bytes, start, 4);
    Put(bytes, 0, 2);
    return bytes;
}

std::string DeflatedZeros(std::size_t count) {
    constexpr std::size_t kLongestMatch = 258;
    BitWriter bits;
    bits.Put(1, 1);         // the last block
    bits.Put(1, 2);         // fixed codes
    bits.PutCode(0x30, 8);  // one zero
    --count;
    for (; count >= kLongestMatch; count -= kLongestMatch) {
        bits.PutCode(0xC5, 8);  // 258 bytes
        bits.PutCode(0, 5);     // from one byte back
    }
    for (; count > 0; --count) bits.PutCode(0x30, 8);
    bits.PutCode(0, 7);  // end of block
    return bits.Bytes();
}

std::uint32_t Crc32(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        crc32_z(0, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
}

}  // namespace devkit::package
