#include "base/io/printwritestreambuffer.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

#include "base/logging/check.h"

namespace base::io {
namespace {

using Block = std::array<char, 4096>;

// What one call of a pipeline stream can take of a request.
ULONG OneCall(std::streamsize count) noexcept {
    constexpr std::streamsize kMost = std::numeric_limits<ULONG>::max();
    return static_cast<ULONG>(std::clamp<std::streamsize>(count, 0, kMost));
}

}  // namespace

PrintWriteStreamBuffer::PrintWriteStreamBuffer(IPrintWriteStream* pWriteStream)
    : m_pWriteStream(pWriteStream) {}

PrintWriteStreamBuffer::PrintWriteStreamBuffer(IPrintReadStream* pReadStream) : m_pReadStream(pReadStream) {}

PrintWriteStreamBuffer::int_type PrintWriteStreamBuffer::overflow(int_type character) {
    if (!m_pWriteStream || traits_type::eq_int_type(character, traits_type::eof())) return traits_type::eof();
    const char byte = traits_type::to_char_type(character);
    ULONG written = 0;
    const HRESULT hr = m_pWriteStream->WriteBytes(&byte, 1, &written);
    m_written += written;
    return SUCCEEDED(hr) && written == 1 ? character : traits_type::eof();
}

PrintWriteStreamBuffer::int_type PrintWriteStreamBuffer::uflow() {
    char byte = 0;
    return xsgetn(&byte, 1) == 1 ? traits_type::to_int_type(byte) : traits_type::eof();
}

PrintWriteStreamBuffer::int_type PrintWriteStreamBuffer::underflow() {
    const int_type character = uflow();
    if (traits_type::eq_int_type(character, traits_type::eof())) return character;
    if (FAILED(m_pReadStream->Seek(-1, STREAM_SEEK_CUR, nullptr))) return traits_type::eof();
    --m_read;
    return character;
}

std::streamsize PrintWriteStreamBuffer::xsgetn(char* pBuffer, std::streamsize count) {
    if (!m_pReadStream) {
        logging::Throw<std::logic_error>("read data from buffer which to use for write.");
    }
    ULONG read = 0;
    BOOL endOfFile = FALSE;
    const HRESULT hr = m_pReadStream->ReadBytes(pBuffer, OneCall(count), &read, &endOfFile);
    m_read += read;
    return FAILED(hr) ? 0 : static_cast<std::streamsize>(read);
}

std::streamsize PrintWriteStreamBuffer::xsputn(const char* pBuffer, std::streamsize count) {
    if (!m_pWriteStream) {
        logging::Throw<std::logic_error>("write data from buffer which to use for read.");
    }
    ULONG written = 0;
    const HRESULT hr = m_pWriteStream->WriteBytes(pBuffer, OneCall(count), &written);
    m_written += written;
    if (FAILED(hr)) logging::Throw<std::overflow_error>("IPrintWriteStream::WriteBytes failed.");
    return static_cast<std::streamsize>(written);
}

PrintWriteStreamBuffer::pos_type PrintWriteStreamBuffer::seekoff(off_type offset,
                                                                 std::ios_base::seekdir direction,
                                                                 std::ios_base::openmode mode) {
    const pos_type invalid(off_type(-1));
    if (offset < 0) return invalid;
    switch (direction) {
        case std::ios_base::cur:
            if ((mode & std::ios_base::in) != 0 && m_pReadStream) return SkipInput(offset);
            if ((mode & std::ios_base::out) != 0 && m_pWriteStream) return FillOutput(offset);
            return invalid;
        case std::ios_base::beg:
        case std::ios_base::end:
            return invalid;
        default:
            logging::Throw<std::invalid_argument>("invalide std::ios_base::seekdir");
    }
}

PrintWriteStreamBuffer::pos_type PrintWriteStreamBuffer::seekpos(pos_type position,
                                                                 std::ios_base::openmode mode) {
    return seekoff(position, std::ios_base::beg, mode);
}

PrintWriteStreamBuffer::pos_type PrintWriteStreamBuffer::SkipInput(off_type offset) {
    Block scratch;
    while (offset > 0) {
        const std::streamsize wanted = std::min<off_type>(offset, scratch.size());
        const std::streamsize read = xsgetn(scratch.data(), wanted);
        if (read == 0) break;
        offset -= read;
    }
    return pos_type(static_cast<off_type>(m_read));
}

PrintWriteStreamBuffer::pos_type PrintWriteStreamBuffer::FillOutput(off_type offset) {
    const Block filler{};
    while (offset > 0) {
        const std::streamsize wanted = std::min<off_type>(offset, filler.size());
        const std::streamsize written = xsputn(filler.data(), wanted);
        if (written == 0) break;
        offset -= written;
    }
    return pos_type(static_cast<off_type>(m_written));
}

}  // namespace base::io
