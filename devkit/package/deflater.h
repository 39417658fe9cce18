#pragma once

#include <zlib.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "devkit/common/storage.h"

namespace devkit::package {

// What the directory of an archive tells of a compressed content.
struct Deflated {
    std::uint64_t size = 0;
    std::uint64_t compressedSize = 0;
    std::uint32_t crc = 0;
};

// Compresses one content after the other, as raw deflate streams, with one memory for all. A compressor of
// zlib takes 256 KB, which Wine's heap would fetch from the system and return for each entry of an archive.
class Deflater {
  public:
    // Throws std::bad_alloc.
    Deflater();
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;
    ~Deflater();

    // Begins with another content, which is read from its start and outlives what is asked for. What was left
    // of the one before is forgotten.
    void Begin(common::ByteSource& content);
    // Puts the next compressed bytes into the buffer, as many as it holds but at the end; 0 behind the end.
    // Passes on what the content throws.
    [[nodiscard]] std::size_t Read(void* pBuffer, std::size_t size);

    // Of what was read so far.
    [[nodiscard]] const Deflated& Result() const noexcept { return m_result; }

  private:
    void Refill();

    z_stream m_stream{};
    std::array<unsigned char, 16'384> m_input{};
    common::ByteSource* m_pContent = nullptr;
    bool m_isReadWhole = false;
    bool m_isEnded = false;
    Deflated m_result;
};

}  // namespace devkit::package
