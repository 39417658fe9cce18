#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <string>

#include "base/xps/fixedpagesource.h"
#include "platform/comobject.h"
#include "platform/filterpipeline.h"

namespace bench {

// A page of glyph markup of the given size as a pipeline read stream. The markup is made while it is read, so
// that a page of 100 MB costs no memory that would hide what the reader and its handler use. Both streams are
// members, whose own reference nobody gives up.
class GlyphPageStream final : public platform::ComIdentity<platform::ReferenceCount, IPrintReadStream> {
  public:
    explicit GlyphPageStream(std::uint64_t size);

    // The bytes of the whole page, at least the size asked for.
    [[nodiscard]] std::uint64_t Size() const noexcept { return m_size; }

    HRESULT STDMETHODCALLTYPE Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) override;
    HRESULT STDMETHODCALLTYPE ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                        BOOL* pEndOfFile) override;

  private:
    std::string m_head;
    // Some hundred elements, repeated as often as the size needs.
    std::string m_body;
    std::string m_tail;
    std::uint64_t m_size;
    std::uint64_t m_position = 0;
};

// Counts what is written and drops it.
class DiscardingWriteStream final
    : public platform::ComIdentity<platform::ReferenceCount, IPrintWriteStream> {
  public:
    [[nodiscard]] std::uint64_t Written() const noexcept { return m_written; }

    HRESULT STDMETHODCALLTYPE WriteBytes(const void* pBuffer, ULONG cb, ULONG* pcbWritten) override;
    void STDMETHODCALLTYPE Close() override {}

  private:
    std::uint64_t m_written = 0;
};

// A page made of the two, rewritten as the filter rewrites it.
class GlyphPage final : public base::xps::FixedPageSource {
  public:
    explicit GlyphPage(std::uint64_t size) : input(size) {}

    // Rewritten without being asked whether it must be.
    void Validate() override {}
    platform::ComPtr<IPrintReadStream> GetPageReadStream() override;
    platform::ComPtr<IPrintWriteStream> GetPageWriteStream() override;
    platform::ComPtr<ISAXContentHandler> CreateContentHandler(std::ostream& sink) override;

    GlyphPageStream input;
    DiscardingWriteStream output;
};

// The floor of any rewrite: the same reader on the same bytes with a handler that does nothing.
void ParseOnly(GlyphPageStream& page);

}  // namespace bench
