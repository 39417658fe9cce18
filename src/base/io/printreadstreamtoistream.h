#pragma once

#include "platform/windows.h"

#include "base/io/printstreamadapter.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace base::io {

// A pipeline read stream as an IStream for the DOM, the SAX reader and the print ticket provider: Read, Seek
// and Stat, which names it "PrintReadStream". Made by CreatePrintReadStreamToIStream.
class PrintReadStreamToIStream final : public PrintStreamAdapter<IPrintReadStream> {
  public:
    explicit PrintReadStreamToIStream(IPrintReadStream* pStream);

    // One read of the pipeline stream, which may give less than wanted before its end. E_POINTER for a null
    // buffer or count, also when no byte is wanted. The end flag is not looked at.
    HRESULT STDMETHODCALLTYPE Read(void* pBuffer, ULONG cb, ULONG* pcbRead) override;
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* pPosition) override;

    // Finds the size by seeking to the end and back. It is kept once it is not 0.
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* pRecord, DWORD flag) override;

  private:
    ~PrintReadStreamToIStream() override = default;
    [[nodiscard]] HRESULT MeasureSize() noexcept;
};

// HresultError with E_POINTER for a null stream; the adapter adds a reference to the stream.
[[nodiscard]] platform::ComPtr<IStream> CreatePrintReadStreamToIStream(IPrintReadStream* pStream);

}  // namespace base::io
