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

// What a read stream reads.
class ReadableBytes {
  public:
    virtual ~ReadableBytes() = default;
    // How many there are; may wait for the end.
    [[nodiscard]] virtual std::uint64_t Size() = 0;
    // Up to `size` bytes from `offset`, none past the end; may wait for the first of them. `isEnd` tells
    // whether none follow.
    virtual std::size_t ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size, bool& isEnd) = 0;
};

[[nodiscard]] std::shared_ptr<ReadableBytes> MakeReadable(Bytes bytes);

// What a write stream writes to.
class WritableBytes {
  public:
    virtual ~WritableBytes() = default;
    virtual void Append(const void* pBytes, std::size_t size) = 0;
    virtual void Close() = 0;
    [[nodiscard]] virtual bool IsClosed() const = 0;
};

// A read stream, for one thread at a time. Reads deliver at most what the behaviour allows. A position after
// the end is permitted and reads nothing; one before the start gives STG_E_SEEKERROR, an unknown origin
// STG_E_INVALIDFUNCTION, and the position stays. A read that is planned to fail with S_FALSE succeeds without
// a byte and is not the end.
class ReadStream final : public ComObject<IPrintReadStream> {
  public:
    // `name` is the part's, for descriptions.
    ReadStream(ContextPtr context, const std::string& name, Bytes bytes);
    ReadStream(ContextPtr context, const std::string& name, std::shared_ptr<ReadableBytes> bytes);

    HRESULT STDMETHODCALLTYPE Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) override;
    HRESULT STDMETHODCALLTYPE ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                        BOOL* pEndOfFile) override;

  private:
    std::string m_name;
    std::shared_ptr<ReadableBytes> m_bytes;
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
class Writing final : public WritableBytes {
  public:
    // Only when the stream was closed do the bytes count.
    [[nodiscard]] bool IsClosed() const override { return m_closed != nullptr; }
    // What was written, null until the stream was closed.
    [[nodiscard]] const Bytes& Written() const noexcept { return m_closed; }

    void Append(const void* pBytes, std::size_t size) override {
        m_open.append(static_cast<const char*>(pBytes), size);
    }
    void Close() override;

  private:
    std::string m_open;
    Bytes m_closed;
};

// A write stream, for one thread at a time. Writing or closing after Close is a breach; releasing
// without Close is noted in the context. A write that is planned to fail with S_FALSE succeeds and takes
// nothing.
class WriteStream final : public ComObject<IPrintWriteStream, IPrintWriteStreamFlush> {
  public:
    WriteStream(ContextPtr context, const std::string& name, std::shared_ptr<WritableBytes> target);

    HRESULT STDMETHODCALLTYPE WriteBytes(const void* pBuffer, ULONG cb, ULONG* pcbWritten) override;
    void STDMETHODCALLTYPE Close() override;
    HRESULT STDMETHODCALLTYPE FlushData() override;

  private:
    ~WriteStream() override;

    std::string m_name;
    std::shared_ptr<WritableBytes> m_target;
};

}  // namespace devkit::pipeline
