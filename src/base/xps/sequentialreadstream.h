#pragma once

#include "platform/windows.h"

#include "platform/comobject.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace base::xps {

// A pipeline's read stream as the sequential stream that a SAX reader takes. A pipeline's stream may give
// less than it is asked for before its end, which a reader takes for the end; so a read goes on until the
// buffer is full or the end is there. A stream that keeps answering without a byte, an end or a failure is
// taken for broken. Made with one reference, which is the maker's.
class SequentialReadStream final : public platform::ComIdentity<platform::ReferenceCount, ISequentialStream> {
  public:
    // Shares the stream, which must not be null.
    explicit SequentialReadStream(platform::ComPtr<IPrintReadStream> pStream) noexcept;

    // How many answers in a row may be empty before the read fails.
    static constexpr int kMostEmptyAnswers = 100;

    // S_FALSE with fewer bytes than asked for is the end. E_INVALIDARG without a place for the count or,
    // when bytes are asked for, for the bytes; a failing stream's own code, with what was read before it;
    // STG_E_READFAULT for one that gives nothing for ever.
    HRESULT STDMETHODCALLTYPE Read(void* pBuffer, ULONG cb, ULONG* pcbRead) override;
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG*) override { return E_NOTIMPL; }

  private:
    ~SequentialReadStream() override = default;

    BOOL m_endOfFile = FALSE;
    platform::ComPtr<IPrintReadStream> m_pStream;
};

}  // namespace base::xps
