#include "devkit/package/deflater.h"

#include <algorithm>
#include <limits>
#include <new>

namespace devkit::package {

namespace {

// The middle of zlib's scale: the smallest level costs several times as much for a few per cent.
constexpr int kLevel = 6;
constexpr int kMemoryLevel = 8;

}  // namespace

Deflater::Deflater() {
    // The window of zlib's largest size; negative for a stream without zlib's own head and checksum.
    if (deflateInit2(&m_stream, kLevel, Z_DEFLATED, -MAX_WBITS, kMemoryLevel, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
}

Deflater::~Deflater() { deflateEnd(&m_stream); }

void Deflater::Begin(common::ByteSource& content) {
    deflateReset(&m_stream);
    m_stream.avail_in = 0;
    m_pContent = &content;
    m_isReadWhole = m_isEnded = false;
    m_result = {};
}

void Deflater::Refill() {
    const std::size_t count = m_pContent->ReadAt(m_result.size, m_input.data(), m_input.size());
    m_isReadWhole = count == 0;
    m_result.size += count;
    m_result.crc = static_cast<std::uint32_t>(crc32_z(m_result.crc, m_input.data(), count));
    m_stream.next_in = m_input.data();
    m_stream.avail_in = static_cast<uInt>(count);
}

std::size_t Deflater::Read(void* pBuffer, std::size_t size) {
    const uInt room = static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
    m_stream.next_out = static_cast<Bytef*>(pBuffer);
    m_stream.avail_out = room;
    while (m_stream.avail_out != 0 && !m_isEnded) {
        if (m_stream.avail_in == 0 && !m_isReadWhole) Refill();
        m_isEnded = deflate(&m_stream, m_isReadWhole ? Z_FINISH : Z_NO_FLUSH) == Z_STREAM_END;
    }
    const std::size_t count = room - m_stream.avail_out;
    m_result.compressedSize += count;
    return count;
}

}  // namespace devkit::package
