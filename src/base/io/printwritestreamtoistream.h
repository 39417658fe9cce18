#pragma once

#include "platform/windows.h"

#include "base/io/printstreamadapter.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace base::io {

// A pipeline write stream as an IStream: Write and Stat, which names it "PrintWriteStream". The pipeline
// stream is not closed; that stays with whoever obtained it. Made by CreatePrintWriteStreamToIStream.
class PrintWriteStreamToIStream final : public PrintStreamAdapter<IPrintWriteStream> {
  public:
    explicit PrintWriteStreamToIStream(IPrintWriteStream* pStream);

    // One write of the pipeline stream, which may take less than it was given. E_POINTER for a null buffer or
    // count, also when there is nothing to write.
    HRESULT STDMETHODCALLTYPE Write(const void* pBuffer, ULONG cb, ULONG* pcbWritten) override;

    // The size is the number of bytes written so far.
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* pRecord, DWORD flag) override;

  private:
    ~PrintWriteStreamToIStream() override = default;
};

// HresultError with E_POINTER for a null stream; the adapter adds a reference to the stream.
[[nodiscard]] platform::ComPtr<IStream> CreatePrintWriteStreamToIStream(IPrintWriteStream* pStream);

}  // namespace base::io
