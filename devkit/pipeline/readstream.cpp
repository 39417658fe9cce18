#include "devkit/pipeline/readstream.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace devkit::pipeline {

ReadStream::ReadStream(ContextPtr context, const std::string& name, Bytes bytes)
    : ComObject(std::move(context), "ReadStream " + name), m_name(name), m_bytes(std::move(bytes)) {}

HRESULT ReadStream::Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) {
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
            start = static_cast<std::int64_t>(m_bytes->size());
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
    if (pcbRead != nullptr) *pcbRead = 0;
    if (pEndOfFile != nullptr) *pEndOfFile = FALSE;
    if (const HRESULT hr = Context().Calls().Enter("IPrintReadStream::ReadBytes", m_name); FAILED(hr))
        return hr;
    if (pBuffer == nullptr || pcbRead == nullptr || pEndOfFile == nullptr) {
        return Context().Breach("ReadBytes of " + m_name + " was called with a null pointer", E_POINTER);
    }
    const Switches& switches = Context().GetSwitches();
    const std::uint64_t size = m_bytes->size();
    const std::uint64_t left = m_position < size ? size - m_position : 0;
    ULONG count = static_cast<ULONG>(std::min<std::uint64_t>(cbWanted, left));
    if (switches.maxBytesPerRead != 0) count = std::min(count, switches.maxBytesPerRead);
    std::memcpy(pBuffer, m_bytes->data() + (count == 0 ? 0 : m_position), count);
    m_position += count;
    *pcbRead = count;
    const bool atEnd = m_position >= size;
    *pEndOfFile = atEnd && (count == 0 || switches.endFlag == EndFlag::WithLastData) ? TRUE : FALSE;
    return S_OK;
}

}  // namespace devkit::pipeline
