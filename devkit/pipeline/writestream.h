#pragma once

#include "platform/windows.h"

#include <memory>
#include <string>

#include "devkit/pipeline/comobject.h"
#include "devkit/pipeline/readstream.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// What was written for one part, shared by the write stream and the part.
class Writing {
  public:
    // Whether the stream was closed; only then the bytes count.
    [[nodiscard]] bool IsClosed() const noexcept { return m_closed != nullptr; }
    // What was written, null until the stream was closed.
    [[nodiscard]] const Bytes& Written() const noexcept { return m_closed; }

    void Append(const void* data, std::size_t size) { m_open.append(static_cast<const char*>(data), size); }
    void Close();

  private:
    std::string m_open;
    Bytes m_closed;
};

// A write stream into memory, for one thread at a time. Writing or closing after Close is a breach; releasing
// without Close is noted in the context.
class WriteStream final : public ComObject<IPrintWriteStream, IPrintWriteStreamFlush> {
  public:
    WriteStream(ContextPtr context, const std::string& name, std::shared_ptr<Writing> writing);

    HRESULT STDMETHODCALLTYPE WriteBytes(const void* pBuffer, ULONG cb, ULONG* pcbWritten) override;
    void STDMETHODCALLTYPE Close() override;
    HRESULT STDMETHODCALLTYPE FlushData() override;

  private:
    ~WriteStream() override;

    std::string m_name;
    std::shared_ptr<Writing> m_writing;
};

}  // namespace devkit::pipeline
