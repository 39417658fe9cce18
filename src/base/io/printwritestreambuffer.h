#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <ios>
#include <streambuf>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace base::io {

// A standard stream buffer over a pipeline stream of either kind. It buffers nothing: each operation is one
// call of the pipeline stream, so a caller with many small pieces gathers them first. The pipeline stream is
// not closed.
//
// Reading from a buffer over a write stream, or writing to one over a read stream, throws std::logic_error; a
// single character that cannot be written is answered with end-of-file.
class PrintWriteStreamBuffer final : public std::streambuf {
  public:
    // Each adds a reference to the stream.
    explicit PrintWriteStreamBuffer(IPrintWriteStream* pWriteStream);
    explicit PrintWriteStreamBuffer(IPrintReadStream* pReadStream);

  protected:
    int_type overflow(int_type character) override;
    int_type uflow() override;
    int_type underflow() override;
    std::streamsize xsgetn(char* pBuffer, std::streamsize count) override;
    // A failing write throws std::overflow_error; the result is what the stream took.
    std::streamsize xsputn(const char* pBuffer, std::streamsize count) override;

    // Forward from the current position alone: an input side skips, an output side writes filler. The result
    // is the number of bytes read or written so far; -1 for anything that cannot be done.
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

  private:
    [[nodiscard]] pos_type SkipInput(off_type offset);
    [[nodiscard]] pos_type FillOutput(off_type offset);

    platform::ComPtr<IPrintWriteStream> m_pWriteStream;
    std::uint32_t m_written = 0;
    platform::ComPtr<IPrintReadStream> m_pReadStream;
    std::uint32_t m_read = 0;
};

}  // namespace base::io
