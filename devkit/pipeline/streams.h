#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <memory>
#include <string>

#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// The bytes of a part, never changed once they are shared.
using Bytes = std::shared_ptr<const std::string>;

// A read stream over bytes in memory, for one thread at a time. Reads deliver at most what the behaviour
// allows. A position after the end is permitted and reads nothing; one before the start gives
// STG_E_SEEKERROR, an unknown origin STG_E_INVALIDFUNCTION, and the position stays.
class ReadStream final : public ComObject<IPrintReadStream> {
  public:
    // `name` is the part's, for descriptions.
    ReadStream(ContextPtr context, const std::string& name, Bytes bytes);

    HRESULT STDMETHODCALLTYPE Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) override;
    HRESULT STDMETHODCALLTYPE ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                        BOOL* pEndOfFile) override;

  private:
    std::string m_name;
    Bytes m_bytes;
    std::uint64_t m_position = 0;
};

// When a factory's stream can be had.
enum class Available {
    Always,
    AfterInitialize,  // in InitializeFilter the platform's GetStream would wait for ever: a breach
};

// The object of "PerUserPrintTicket" and its like: each call gives a new stream at its start.
class ReadStreamFactory final : public ComObject<IPrintReadStreamFactory> {
  public:
    ReadStreamFactory(ContextPtr context, std::string name, Bytes bytes,
                      Available available = Available::Always);

    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) override;

  private:
    std::string m_name;
    Bytes m_bytes;
    Available m_available;
};

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
