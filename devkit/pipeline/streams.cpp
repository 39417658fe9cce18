#include "devkit/pipeline/streams.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace devkit::pipeline {

namespace {

class MemoryBytes final : public ReadableBytes {
  public:
    explicit MemoryBytes(Bytes bytes) : m_bytes(std::move(bytes)) {}

    std::uint64_t Size() override { return m_bytes->size(); }
    std::size_t ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size, bool& isEnd) override {
        const std::uint64_t left = offset < m_bytes->size() ? m_bytes->size() - offset : 0;
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
        if (count != 0) m_bytes->copy(static_cast<char*>(pBuffer), count, static_cast<std::size_t>(offset));
        isEnd = count == left;
        return count;
    }

  private:
    const Bytes m_bytes;
};

}  // namespace

std::shared_ptr<ReadableBytes> MakeReadable(Bytes bytes) {
    return std::make_shared<MemoryBytes>(std::move(bytes));
}

ReadStream::ReadStream(ContextPtr context, const std::string& name, Bytes bytes)
    : ReadStream(std::move(context), name, MakeReadable(std::move(bytes))) {}

ReadStream::ReadStream(ContextPtr context, const std::string& name, std::shared_ptr<ReadableBytes> bytes)
    : ComObject(std::move(context), "ReadStream " + name), m_name(name), m_bytes(std::move(bytes)) {}

HRESULT ReadStream::Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) {
    const CallTime time = PipelineTime();
    if (pNewPosition != nullptr) *pNewPosition = 0;
    if (const HRESULT hr = Context().Calls().Enter("IPrintReadStream::Seek", m_name); FAILED(hr)) return hr;
    std::int64_t start = 0;
    switch (origin) {
        case STREAM_SEEK_SET:
            break;
        case STREAM_SEEK_CUR:
            start = static_cast<std::int64_t>(m_position);
            break;
        case STREAM_SEEK_END:
            start = static_cast<std::int64_t>(m_bytes->Size());
            break;
        default:
            return STG_E_INVALIDFUNCTION;
    }
    if (offset < -start || offset > std::numeric_limits<std::int64_t>::max() - start) return STG_E_SEEKERROR;
    m_position = static_cast<std::uint64_t>(start + offset);
    if (pNewPosition != nullptr) *pNewPosition = m_position;
    return S_OK;
}

HRESULT ReadStream::ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead, BOOL* pEndOfFile) {
    const CallTime time = PipelineTime();
    if (pcbRead != nullptr) *pcbRead = 0;
    if (pEndOfFile != nullptr) *pEndOfFile = FALSE;
    const HRESULT planned = Context().Calls().Enter("IPrintReadStream::ReadBytes", m_name);
    if (FAILED(planned)) return planned;
    if (pBuffer == nullptr || pcbRead == nullptr || pEndOfFile == nullptr) {
        return Context().Breach(Check::NullArgument,
                                "ReadBytes of " + m_name + " was called with a null pointer", E_POINTER);
    }
    if (planned == S_FALSE) return S_OK;
    const Behaviour& behaviour = Context().GetBehaviour();
    const ULONG most = behaviour.maxBytesPerRead;
    bool isEnd = false;
    if (most == 0 || most < cbWanted) Context().Used("short-reads");
    const std::size_t count =
        m_bytes->ReadAt(m_position, pBuffer, most == 0 ? cbWanted : std::min(cbWanted, most), isEnd);
    if (isEnd) Context().Used("end-flag");
    m_position += count;
    *pcbRead = static_cast<ULONG>(count);
    *pEndOfFile = isEnd && (count == 0 || behaviour.endFlag == EndFlag::WithLastData) ? TRUE : FALSE;
    return S_OK;
}

ReadStreamFactory::ReadStreamFactory(ContextPtr context, std::string name, Bytes bytes, Available available)
    : ComObject(std::move(context), "ReadStreamFactory " + name),
      m_name(std::move(name)),
      m_bytes(std::move(bytes)),
      m_available(available) {}

HRESULT ReadStreamFactory::GetStream(IPrintReadStream** ppStream) {
    if (ppStream == nullptr) return E_POINTER;
    *ppStream = nullptr;
    return Answer([&]() -> HRESULT {
        if (const HRESULT hr = Context().Calls().Enter("IPrintReadStreamFactory::GetStream", m_name);
            FAILED(hr)) {
            return hr;
        }
        if (m_available == Available::AfterInitialize && Context().IsInitializing()) {
            return Context().Breach(
                Check::JobTicketEarly,
                "GetStream of " + m_name + " was called in InitializeFilter, where it never returns");
        }
        *ppStream = MakeObject<ReadStream>(SharedContext(), m_name, m_bytes).Detach();
        return S_OK;
    });
}

void Writing::Close() { m_closed = std::make_shared<const std::string>(std::exchange(m_open, {})); }

WriteStream::WriteStream(ContextPtr context, const std::string& name, std::shared_ptr<WritableBytes> target)
    : ComObject(std::move(context), "WriteStream " + name), m_name(name), m_target(std::move(target)) {}

WriteStream::~WriteStream() {
    if (!m_target->IsClosed())
        Context().LeftOpen("the write stream of " + m_name + " was released without Close");
}

HRESULT WriteStream::WriteBytes(const void* pBuffer, ULONG cb, ULONG* pcbWritten) {
    if (pcbWritten != nullptr) *pcbWritten = 0;
    return Answer([&]() -> HRESULT {
        const HRESULT planned = Context().Calls().Enter("IPrintWriteStream::WriteBytes", m_name);
        if (FAILED(planned)) return planned;
        if (pBuffer == nullptr || pcbWritten == nullptr) {
            return Context().Breach(Check::NullArgument,
                                    "WriteBytes of " + m_name + " was called with a null pointer", E_POINTER);
        }
        if (m_target->IsClosed())
            return Context().Breach(Check::WriteAfterClose, "WriteBytes of " + m_name + " came after Close");
        if (planned == S_FALSE) return S_OK;
        const ULONG most = Context().GetBehaviour().maxBytesPerWrite;
        const ULONG count = most == 0 ? cb : std::min(cb, most);
        if (most == 0 || most < cb) Context().Used("short-writes");
        m_target->Append(pBuffer, count);
        *pcbWritten = count;
        return S_OK;
    });
}

void WriteStream::Close() {
    static_cast<void>(Answer([&]() -> HRESULT {
        Context().Calls().Note("IPrintWriteStream::Close", m_name);
        if (m_target->IsClosed())
            return Context().Breach(Check::StreamTwice,
                                    "the write stream of " + m_name + " was closed twice");
        m_target->Close();
        return S_OK;
    }));
}

HRESULT WriteStream::FlushData() {
    const CallTime time = PipelineTime();
    return Context().Calls().Enter("IPrintWriteStreamFlush::FlushData", m_name);
}

}  // namespace devkit::pipeline
